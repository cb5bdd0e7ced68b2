// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/page_fit.h"

#include <cups/raster.h>
#include <fcntl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "cli/child_process.h"
#include "common/handles.h"

namespace wren::cli {
namespace {

// What the filters of CUPS take for the same size (seen with pdftopdf 1.28).
constexpr double kTolerance = 1.02;
constexpr double kMmPerPt = 25.4 / 72;

// The user has decided how pages become paper.
constexpr const char* kScalingOptions[] = {
    "crop-to-fit", "fill",          "fit-to-page",     "fitplot",
    "landscape",   "number-up",     "natural-scaling", "orientation-requested",
    "page-ranges", "print-scaling", "scaling"};

std::string millimetres(double points) {
  return std::to_string(std::lround(points * kMmPerPt));
}

std::string sizeText(const PageSizePt& size) {
  return millimetres(size.width) + " x " + millimetres(size.length) + " mm";
}

bool fitsInto(const PageSizePt& page, const PageSizePt& paper) {
  return page.width <= paper.width * kTolerance && page.length <= paper.length * kTolerance;
}

PageSizePt turned(const PageSizePt& size) {
  return {size.length, size.width};
}

// Whole millimetres that hold the page.
std::string customSize(const PageSizePt& page, const filter::CustomSizeLimits& limits) {
  const auto roundUp = [](double points, double least) {
    return std::to_string(std::lround(std::ceil(std::max(points, least) * kMmPerPt - 0.1)));
  };
  return "Custom." + roundUp(page.width, limits.minWidthPt) + "x" +
         roundUp(page.length, limits.minLengthPt) + "mm";
}

std::string adviceFor(const PageSizePt& page, const PageSizePt& paper,
                      const filter::CustomSizeLimits& limits) {
  if (page.width > paper.width * kTolerance || limits.maxLengthPt <= 0) return {};
  if (page.length > double{limits.maxLengthPt}) {
    return "; no page can be longer than " + millimetres(limits.maxLengthPt) +
           " mm, so only a document of several pages prints at its length";
  }
  return "; -o PageSize=" + customSize(page, limits) + " prints it at its length";
}

// "page 2 (210 x 297 mm) and 3 more were".
template <typename Kind>
std::string nameOf(const std::vector<PageSizePt>& pages, const Kind& isOfKind) {
  const auto first = std::find_if(pages.begin(), pages.end(), isOfKind);
  const auto more = std::count_if(pages.begin(), pages.end(), isOfKind) - 1;
  return "page " + std::to_string(first - pages.begin() + 1) + " (" + sizeText(*first) + ")" +
         (more == 0 ? " was" : " and " + std::to_string(more) + " more were");
}

// The page of a raster; 0 x 0 if it has none.
PageSizePt paperOf(const std::string& rasterPath) {
  const FileDescriptor file(open(rasterPath.c_str(), O_RDONLY | O_CLOEXEC));
  cups_raster_t* raster = file ? cupsRasterOpen(file.get(), CUPS_RASTER_READ) : nullptr;
  if (raster == nullptr) return {};
  cups_page_header2_t header = {};
  const bool hasPage = cupsRasterReadHeader2(raster, &header) != 0;
  cupsRasterClose(raster);
  if (!hasPage) return {};
  return {double{header.cupsPageSize[0]}, double{header.cupsPageSize[1]}};
}

}  // namespace

// "Page    1 size:  226.77 x 425.2 pts (A4)" and "Page    1 rot:   90".
std::vector<PageSizePt> parsePageSizes(const std::string& pdfinfo) {
  std::vector<PageSizePt> pages;
  std::istringstream lines(pdfinfo);
  for (std::string line; std::getline(lines, line);) {
    PageSizePt size;
    int turned = 0;
    // NOLINTBEGIN(cert-err34-c): a size that is beyond a double is wider than any paper
    if (std::sscanf(line.c_str(), "Page %*d size: %lf x %lf", &size.width, &size.length) == 2) {
      pages.push_back(size);
    } else if (std::sscanf(line.c_str(), "Page %*d rot: %d", &turned) == 1 && !pages.empty() &&
               turned % 180 != 0) {
      std::swap(pages.back().width, pages.back().length);
    }
    // NOLINTEND(cert-err34-c)
  }
  return pages;
}

// A page that would fit lying on its side keeps its size, and loses what is beyond the paper.
std::string describeLargePages(const std::vector<PageSizePt>& pages, const PageSizePt& paper,
                               const filter::CustomSizeLimits& limits) {
  const auto isShrunk = [&](const PageSizePt& page) {
    return !fitsInto(page, paper) && !fitsInto(turned(page), paper);
  };
  const auto isCut = [&](const PageSizePt& page) {
    return !fitsInto(page, paper) && fitsInto(turned(page), paper);
  };
  const std::string of = " the paper of " + sizeText(paper);
  if (const auto shrunk = std::find_if(pages.begin(), pages.end(), isShrunk);
      shrunk != pages.end()) {
    return nameOf(pages, isShrunk) + " shrunk to fit" + of + adviceFor(*shrunk, paper, limits);
  }
  if (std::none_of(pages.begin(), pages.end(), isCut)) return {};
  return nameOf(pages, isCut) + " cut off at the edges of" + of +
         "; -o fit-to-page shrinks, -o landscape turns";
}

std::string describePageFit(const std::string& document, const std::string& rasterPath,
                            const JobOptions& options, const filter::CustomSizeLimits& limits) {
  constexpr int kSeconds = 20;
  for (const char* name : kScalingOptions) {
    if (hasOption(options, name)) return {};
  }
  const PageSizePt paper = paperOf(rasterPath);
  if (paper.width <= 0) return {};
  const std::string path = std::filesystem::absolute(document).string();
  const ChildOutput pages = captureOutput({"pdfinfo", "-f", "1", "-l", "9999", path}, kSeconds);
  if (pages.status != 0) return {};
  return describeLargePages(parsePageSizes(pages.text), paper, limits);
}

}  // namespace wren::cli
