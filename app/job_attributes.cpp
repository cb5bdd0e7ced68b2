// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_attributes.h"

#include <memory>
#include <string>
#include <vector>

namespace wren::app {
namespace {

struct DeleteIpp {
  void operator()(ipp_t* attributes) const { ippDelete(attributes); }
};

// The printer's own copy may change under the reader, so this is a copy of its own.
std::shared_ptr<ipp_t> driverAttributesOf(pappl_printer_t* printer) {
  return {papplPrinterGetDriverAttributes(printer), DeleteIpp()};
}

std::optional<std::string> textOf(ipp_attribute_t* attribute) {
  if (attribute == nullptr) return std::nullopt;
  return attributeText(attribute);
}

// A queue of CUPS sends each attribute that its printer has, with finishings "none" for a person
// who chose nothing; what nobody chooses for a receipt gives it away. Such a "none" is no choice.
bool sendsEveryAttribute(pappl_job_t* job) {
  return papplJobGetAttribute(job, "multiple-document-handling") != nullptr &&
         papplJobGetAttribute(job, "output-bin") != nullptr;
}

std::optional<bool> cutAtEndOf(pappl_job_t* job) {
  ipp_attribute_t* finishings = papplJobGetAttribute(job, "finishings");
  if (finishings == nullptr) return std::nullopt;
  for (int i = 0; i < ippGetCount(finishings); ++i) {
    if (ippGetInteger(finishings, i) == IPP_FINISHINGS_TRIM) return true;
  }
  if (sendsEveryAttribute(job)) return std::nullopt;
  return false;
}

}  // namespace

std::string attributeText(ipp_attribute_t* attribute) {
  std::vector<char> text(ippAttributeString(attribute, nullptr, 0) + 1);
  ippAttributeString(attribute, text.data(), text.size());
  return text.data();
}

std::optional<std::string> printerDefault(pappl_printer_t* printer, const std::string& name) {
  const auto defaults = driverAttributesOf(printer);
  return textOf(ippFindAttribute(defaults.get(), (name + "-default").c_str(), IPP_TAG_ZERO));
}

JobRequest requestOf(pappl_job_t* job, const pappl_pr_options_t& options) {
  JobRequest request;
  request.ofJob = [job](const char* attribute) {
    return textOf(papplJobGetAttribute(job, attribute));
  };
  request.ofPrinter = [defaults = driverAttributesOf(papplJobGetPrinter(job))](const char* name) {
    const std::string attribute = std::string(name) + "-default";
    return textOf(ippFindAttribute(defaults.get(), attribute.c_str(), IPP_TAG_ZERO));
  };
  request.content = textOf(papplJobGetAttribute(job, "print-content-optimize")).value_or("");
  request.cutAtEnd = cutAtEndOf(job);
  request.darkness = options.print_darkness;
  request.configuredDarkness = options.darkness_configured;
  request.highQuality = options.print_quality == IPP_QUALITY_HIGH;
  return request;
}

}  // namespace wren::app
