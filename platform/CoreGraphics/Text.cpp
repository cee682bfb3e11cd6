#include "CoreGraphics/Text.h"

#include <algorithm>
#include <cmath>

#include "CoreFoundation/Unicode.h"
#include "CoreGraphics/Private/CGContext.h"
#include "CoreGraphics/Private/Fonts.h"

namespace ios {
namespace {

constexpr std::string_view kEllipsis = "…";

guint16 channel(double component) {
  return static_cast<guint16>(std::lround((component > 0 ? std::min(component, 1.0) : 0.0) * 65535));
}

double points(int pangoUnits) {
  return static_cast<double>(pangoUnits) / PANGO_SCALE;
}

}  // namespace

struct TextLayout::Impl {
  struct Line {
    PangoLayoutLine* line;
    double baseline, width;
  };

  std::vector<TextRun> runs;
  CGFloat width;
  TextAlignment alignment;
  PangoHandle<PangoContext> context = makeTextContext();
  PangoHandle<PangoLayout> layout;
  std::vector<Line> lines;
  double widest = 0, height = 0;
  bool truncated = false;

  void layOut(const std::string& text, bool withEllipsis);
  void cutTo(int maximumLines);
};

// Lays out the first bytes of the runs' text, `text`, and the ellipsis in the font of the last of them.
void TextLayout::Impl::layOut(const std::string& text, bool withEllipsis) {
  layout.reset(pango_layout_new(context.get()));
  lines.clear();
  widest = height = 0;
  const std::string whole = withEllipsis ? text + std::string(kEllipsis) : text;
  const PangoHandle<PangoAttrList> attributes(pango_attr_list_new());
  std::size_t start = 0;
  for (const TextRun& run : runs) {
    const bool last = &run == &runs.back() || start + run.text.size() >= text.size();
    const std::size_t end = last ? whole.size() : start + run.text.size();
    const auto add = [&](PangoAttribute* attribute) {
      attribute->start_index = static_cast<guint>(start);
      attribute->end_index = static_cast<guint>(end);
      pango_attr_list_insert(attributes.get(), attribute);
    };
    add(pango_attr_font_desc_new(resolveFont(run.font).get()));
    add(pango_attr_foreground_new(channel(run.color.red), channel(run.color.green), channel(run.color.blue)));
    // An alpha of 0 would mean "not given".
    add(pango_attr_foreground_alpha_new(std::max<guint16>(1, channel(run.color.alpha))));
    start = end;
    if (last) break;
  }
  if (!runs.empty()) pango_layout_set_font_description(layout.get(), resolveFont(runs.front().font).get());
  pango_layout_set_attributes(layout.get(), attributes.get());
  pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
  if (width > 0) pango_layout_set_width(layout.get(), static_cast<int>(std::min(width, 1e6) * PANGO_SCALE));
  pango_layout_set_justify(layout.get(), alignment == TextAlignment::justified);
  pango_layout_set_text(layout.get(), whole.data(), static_cast<int>(whole.size()));
  if (whole.empty()) return;

  const PangoHandle<PangoLayoutIter> iterator(pango_layout_get_iter(layout.get()));
  do {
    PangoRectangle extents;
    pango_layout_iter_get_line_extents(iterator.get(), nullptr, &extents);
    lines.push_back({pango_layout_iter_get_line_readonly(iterator.get()),
                     points(pango_layout_iter_get_baseline(iterator.get())), points(extents.width)});
    widest = std::max(widest, points(extents.width));
    height = std::max(height, points(extents.y + extents.height));
  } while (pango_layout_iter_next_line(iterator.get()));
}

// Keeps as much of the text as leaves room for the ellipsis in the last line allowed. Found by trial: the
// width of a prefix depends on its shaping and, in right-to-left text, on its order.
void TextLayout::Impl::cutTo(int maximumLines) {
  const std::string text = pango_layout_get_text(layout.get());
  const PangoLayoutLine* last = lines[static_cast<std::size_t>(maximumLines) - 1].line;
  int count = 0;
  const PangoLogAttr* characters = pango_layout_get_log_attrs_readonly(layout.get(), &count);
  std::vector<std::size_t> stops;
  const char* at = text.data();
  for (int i = 0; i < count; ++i) {
    const auto offset = at - text.data();
    if (offset > last->start_index + last->length) break;
    if (offset >= last->start_index && characters[i].is_cursor_position)
      stops.push_back(static_cast<std::size_t>(offset));
    if (offset < static_cast<std::ptrdiff_t>(text.size())) at = g_utf8_next_char(at);
  }
  if (stops.empty()) stops.push_back(static_cast<std::size_t>(last->start_index));
  const auto prefix = [&](std::size_t stop) {
    std::size_t end = stop;
    while (end > stops.front() && text[end - 1] == ' ') --end;
    return text.substr(0, end);
  };
  std::size_t fits = 0, tooLong = stops.size();
  while (tooLong - fits > 1) {
    const std::size_t middle = (fits + tooLong) / 2;
    layOut(prefix(stops[middle]), true);
    (lines.size() <= static_cast<std::size_t>(maximumLines) ? fits : tooLong) = middle;
  }
  layOut(prefix(stops[fits]), true);
  truncated = true;
}

TextLayout::TextLayout(const std::vector<TextRun>& runs, CGFloat width, TextAlignment alignment,
                       int maximumLines)
    : impl_(std::make_unique<Impl>()) {
  impl_->width = width;
  impl_->alignment = alignment;
  std::string text;
  for (const TextRun& run : runs) {
    impl_->runs.push_back({repairedUTF8(run.text), run.font, run.color});
    text += impl_->runs.back().text;
  }
  impl_->layOut(text, false);
  if (maximumLines > 0 && impl_->lines.size() > static_cast<std::size_t>(maximumLines))
    impl_->cutTo(maximumLines);
}

TextLayout::~TextLayout() = default;

CGSize TextLayout::size() const {
  return {std::ceil(impl_->widest), std::ceil(impl_->height)};
}

int TextLayout::lineCount() const {
  return static_cast<int>(impl_->lines.size());
}

bool TextLayout::truncated() const {
  return impl_->truncated;
}

void TextLayout::draw(const CGContextRef& context, CGPoint origin) const {
  cairo_t* canvas = context ? context->canvas() : nullptr;
  if (!canvas) return;
  const double room = impl_->width > 0 ? impl_->width : size().width;
  for (const auto& [line, baseline, width] : impl_->lines) {
    const bool rightToLeft = pango_layout_line_get_resolved_direction(line) == PANGO_DIRECTION_RTL;
    double share = rightToLeft ? 1 : 0;
    if (impl_->alignment == TextAlignment::left) share = 0;
    if (impl_->alignment == TextAlignment::center) share = 0.5;
    if (impl_->alignment == TextAlignment::right) share = 1;
    cairo_move_to(canvas, origin.x + (room - width) * share, origin.y + baseline);
    pango_cairo_show_layout_line(canvas, line);
  }
  cairo_new_path(canvas);
}

}  // namespace ios
