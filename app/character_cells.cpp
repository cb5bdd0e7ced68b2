// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/character_cells.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <new>

#include "app/document_error.h"

namespace wren::app {
namespace {

// A text of Chinese has a few thousand.
constexpr std::size_t kMaxKept = 4096;
constexpr unsigned kMaxColumns = 2;
// A size at which rounding of the widths does not matter.
constexpr int kMeasuringPx = 1000;

struct UnrefObject {
  void operator()(void* object) const { g_object_unref(object); }
};
template <typename Object>
using ObjectPtr = std::unique_ptr<Object, UnrefObject>;

struct DestroySurface {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct DestroyCairo {
  void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
};
struct DestroyFontOptions {
  void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};
struct FreeFont {
  void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
};
struct UnrefMetrics {
  void operator()(PangoFontMetrics* metrics) const { pango_font_metrics_unref(metrics); }
};

// In units of Pango, `PANGO_SCALE` to the dot.
struct Extent {
  int width;
  int baseline;
};

Extent measure(PangoLayout* layout) {
  PangoRectangle logical;
  pango_layout_get_extents(layout, nullptr, &logical);
  return {logical.width, pango_layout_get_baseline(layout)};
}

int floorToDots(int units) {
  return PANGO_PIXELS_FLOOR(units);
}

}  // namespace

struct CharacterCells::Drawing {
  std::unique_ptr<cairo_surface_t, DestroySurface> surface;
  std::unique_ptr<cairo_t, DestroyCairo> cairo;
  ObjectPtr<PangoFontMap> fonts;
  ObjectPtr<PangoContext> context;
  ObjectPtr<PangoLayout> layout;
  std::unique_ptr<PangoFontDescription, FreeFont> font;
  int fontSize = 0;  // in units of Pango
  int baselinePx = 0;

  explicit Drawing(const std::string& language)
      : fonts(pango_cairo_font_map_new()),
        context(pango_font_map_create_context(fonts.get())),
        layout(pango_layout_new(context.get())),
        font(pango_font_description_from_string("DejaVu Sans Mono,monospace")) {
    if (!language.empty()) {
      pango_context_set_language(context.get(), pango_language_from_string(language.c_str()));
    }
    // All else would leave grey dots or move characters off the dots.
    const std::unique_ptr<cairo_font_options_t, DestroyFontOptions> options(
        cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_NONE);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_FULL);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
    pango_cairo_context_set_font_options(context.get(), options.get());
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
  }

  void setSize(int size) const {
    pango_font_description_set_absolute_size(font.get(), size);
    pango_layout_set_font_description(layout.get(), font.get());
  }

  void setText(const std::string& text) const {
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
  }

  // The size at which a digit is as wide as a cell.
  void chooseSize(unsigned cellWidthPx) {
    setText("0");
    setSize(kMeasuringPx * PANGO_SCALE);
    const int width = measure(layout.get()).width;
    if (width <= 0 || pango_layout_get_unknown_glyphs_count(layout.get()) != 0) {
      throw DocumentError(DocumentError::Kind::kSystem, "no font is installed");
    }
    fontSize = static_cast<int>(std::int64_t{kMeasuringPx} * PANGO_SCALE * PANGO_SCALE *
                                cellWidthPx / width);
    setSize(fontSize);
  }

  // The height of a line of the font, so that lines drawn with characters meet.
  unsigned chooseHeight() {
    const std::unique_ptr<PangoFontMetrics, UnrefMetrics> metrics(
        pango_context_get_metrics(context.get(), font.get(), nullptr));
    baselinePx = PANGO_PIXELS_CEIL(pango_font_metrics_get_ascent(metrics.get()));
    return static_cast<unsigned>(baselinePx +
                                 PANGO_PIXELS_CEIL(pango_font_metrics_get_descent(metrics.get())));
  }

  void createSurface(unsigned widthPx, unsigned heightPx) {
    surface.reset(cairo_image_surface_create(CAIRO_FORMAT_A8, static_cast<int>(widthPx),
                                             static_cast<int>(heightPx)));
    cairo.reset(cairo_create(surface.get()));
    if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
    // For the boxes that stand for characters of no font; they are lines, not glyphs.
    cairo_set_antialias(cairo.get(), CAIRO_ANTIALIAS_NONE);
  }

  void clear() const {
    cairo_set_operator(cairo.get(), CAIRO_OPERATOR_CLEAR);
    cairo_paint(cairo.get());
    cairo_set_operator(cairo.get(), CAIRO_OPERATOR_OVER);
  }

  // A character of another font may be wider than its cells. It is made smaller.
  Extent fit(int widthPx) const {
    const Extent extent = measure(layout.get());
    const int width = widthPx * PANGO_SCALE;
    if (extent.width <= width) return extent;
    setSize(static_cast<int>(std::int64_t{fontSize} * width / extent.width));
    return measure(layout.get());
  }

  void show(const std::string& character, int widthPx) const {
    setText(character);
    const Extent extent = fit(widthPx);
    const int left = floorToDots((widthPx * PANGO_SCALE - extent.width) / 2);
    cairo_move_to(cairo.get(), left, baselinePx - floorToDots(extent.baseline));
    pango_cairo_show_layout(cairo.get(), layout.get());
    cairo_surface_flush(surface.get());
    setSize(fontSize);
  }
};

CharacterCells::CharacterCells(unsigned cellWidthPx, const std::string& language)
    : cellWidthPx_(cellWidthPx), drawing_(std::make_unique<Drawing>(language)) {
  drawing_->chooseSize(cellWidthPx);
  cellHeightPx_ = drawing_->chooseHeight();
  drawing_->createSurface(kMaxColumns * cellWidthPx_, cellHeightPx_);
}

CharacterCells::~CharacterCells() = default;

const std::vector<std::uint8_t>& CharacterCells::draw(const std::string& character,
                                                      unsigned columns) {
  const auto found = drawn_.find(character);
  if (found != drawn_.end()) return found->second;
  if (drawn_.size() >= kMaxKept) drawn_.clear();
  return drawn_.emplace(character, drawNew(character, columns)).first->second;
}

std::vector<std::uint8_t> CharacterCells::drawNew(const std::string& character,
                                                  unsigned columns) const {
  const unsigned widthPx = std::min(columns, kMaxColumns) * cellWidthPx_;
  drawing_->clear();
  drawing_->show(character, static_cast<int>(widthPx));
  const std::uint8_t* coverage = cairo_image_surface_get_data(drawing_->surface.get());
  const int strideBytes = cairo_image_surface_get_stride(drawing_->surface.get());
  std::vector<std::uint8_t> levels;
  levels.reserve(std::size_t{widthPx} * cellHeightPx_);
  for (unsigned y = 0; y < cellHeightPx_; ++y, coverage += strideBytes) {
    for (unsigned x = 0; x < widthPx; ++x) levels.push_back(coverage[x] >= 128 ? 255 : 0);
  }
  return levels;
}

}  // namespace wren::app
