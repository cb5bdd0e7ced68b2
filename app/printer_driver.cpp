// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/printer_driver.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "app/network_device.h"
#include "app/page_sink.h"
#include "app/paper.h"
#include "app/raster_callbacks.h"
#include "app/ready_commands.h"
#include "app/ready_documents.h"
#include "app/vendor_option.h"

namespace wren::app {
namespace {

constexpr int kHundredthsPerMm = 100;
// -100 to 100 in steps of 20: those of the PPDs.
constexpr int kDarknessLevels = 11;

template <std::size_t N>
void copyText(char (&to)[N], std::string_view text) {
  std::snprintf(to, N, "%.*s", static_cast<int>(text.size()), text.data());
}

// The paper beside the head, in hundredths of a millimetre.
int sideMargin(const Paper& paper) {
  constexpr int kHundredthsPerInch = 2540;
  const int head =
      static_cast<int>(paper.headWidthPx) * kHundredthsPerInch / static_cast<int>(kDotsPerInch);
  return (paper.widthMm * kHundredthsPerMm - head) / 2;
}

void describePaper(const Paper& paper, pappl_pr_driver_data_t& data) {
  for (const char* size : paper.sizes) data.media[data.num_media++] = size;
  data.media[data.num_media++] = paper.rollMin;
  data.media[data.num_media++] = paper.rollMax;
  data.num_source = 1;
  data.source[0] = "main-roll";
  data.num_type = 1;
  data.type[0] = "continuous";
  data.left_right = sideMargin(paper);
  data.bottom_top = 0;
  pappl_media_col_t& media = data.media_default;
  copyText(media.size_name, paper.initialSize);
  const pwg_media_t* size = pwgMediaForPWG(paper.initialSize);
  media.size_width = size->width;
  media.size_length = size->length;
  media.left_margin = media.right_margin = data.left_right;
  copyText(media.source, data.source[0]);
  copyText(media.type, data.type[0]);
  data.media_ready[0] = media;
}

void describeQuality(pappl_pr_driver_data_t& data) {
  data.num_resolution = 1;
  data.x_resolution[0] = data.y_resolution[0] = kDotsPerInch;
  data.x_default = data.y_default = kDotsPerInch;
  data.raster_types = PAPPL_PWG_RASTER_TYPE_BLACK_8 | PAPPL_PWG_RASTER_TYPE_SGRAY_8;
  data.color_supported = PAPPL_COLOR_MODE_MONOCHROME;
  data.color_default = PAPPL_COLOR_MODE_MONOCHROME;
  data.content_default = PAPPL_CONTENT_AUTO;
  data.quality_default = IPP_QUALITY_NORMAL;
  data.scaling_default = PAPPL_SCALING_AUTO;
  data.orient_default = IPP_ORIENT_PORTRAIT;
  data.sides_supported = PAPPL_SIDES_ONE_SIDED;
  data.sides_default = PAPPL_SIDES_ONE_SIDED;
  data.duplex = PAPPL_DUPLEX_NONE;
  data.darkness_supported = kDarknessLevels;
  data.finishings = PAPPL_FINISHINGS_TRIM;
}

void addVendorOption(const VendorOption& option, pappl_pr_driver_data_t& data, ipp_t* attributes) {
  data.vendor[data.num_vendor++] = option.attribute;
  const std::string initial = std::string(option.attribute) + "-default";
  const std::string supported = std::string(option.attribute) + "-supported";
  if (option.hasNames()) {
    ippAddString(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, initial.c_str(), nullptr,
                 vendorValueText(option, option.initial).c_str());
    ippAddStrings(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, supported.c_str(),
                  static_cast<int>(option.choices.size()), nullptr, option.choices.data());
    return;
  }
  ippAddInteger(attributes, IPP_TAG_PRINTER, IPP_TAG_INTEGER, initial.c_str(), option.initial);
  ippAddRange(attributes, IPP_TAG_PRINTER, supported.c_str(), option.lowest, option.highest);
}

// What PAPPL leaves out and IPP/2.0 or IPP Everywhere asks for.
void addMissingAttributes(ipp_t* attributes) {
  for (const char* name : {"print-rendering-intent-default", "print-rendering-intent-supported"}) {
    ippAddString(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, name, nullptr, "auto");
  }
  ippAddString(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "pwg-raster-document-sheet-back",
               nullptr, "normal");
  ippAddBoolean(attributes, IPP_TAG_PRINTER, "preferred-attributes-supported", 0);
}

}  // namespace

std::span<pappl_pr_driver_t> printerDrivers() {
  static std::vector<pappl_pr_driver_t> drivers = [] {
    std::vector<pappl_pr_driver_t> list;
    for (const Paper& paper : papers()) {
      list.push_back({paper.driver, paper.model, paper.deviceId, nullptr});
    }
    return list;
  }();
  return drivers;
}

bool describeDriver(pappl_system_t* /*system*/, const char* driverName, const char* /*deviceUri*/,
                    const char* /*deviceId*/, pappl_pr_driver_data_t* data, ipp_t** attributes,
                    void* services) {
  const Paper* paper = findPaper(driverName);
  if (paper == nullptr) return false;
  copyText(data->make_and_model, paper->model);
  data->format = kPrinterFormat;
  data->printfile_cb = printReadyDocument;
  data->kind = PAPPL_KIND_RECEIPT | PAPPL_KIND_ROLL;
  data->ppm = 30;
  describeQuality(*data);
  describePaper(*paper, *data);
  data->status_cb = showPrinterCondition;
  setRasterCallbacks(*data, *static_cast<const JobServices*>(services));
  setCommandCallbacks(*data);
  if (*attributes == nullptr) *attributes = ippNew();
  for (const VendorOption& option : vendorOptions()) addVendorOption(option, *data, *attributes);
  addMissingAttributes(*attributes);
  return true;
}

const char* driverForDevice(const char* /*info*/, const char* /*uri*/, const char* deviceId,
                            void* /*data*/) {
  for (const Paper& paper : papers()) {
    if (deviceId != nullptr && std::strcmp(deviceId, paper.deviceId) == 0) return paper.driver;
  }
  return nullptr;
}

}  // namespace wren::app
