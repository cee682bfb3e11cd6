#include "CoreGraphics/Private/Fonts.h"

#include <cmath>
#include <string_view>

#include "Base/Mutex.h"

namespace ios {
namespace {

struct Family {
  std::string_view platform;
  const char* machine;
  bool onlyRegularAndBold;
};

// The families that the platform has, by the first part of their names.
constexpr Family kFamilies[] = {
    {kSystemFontFamily, "Inter", false},    {"HelveticaNeue", "Liberation Sans", true},
    {"Helvetica", "Liberation Sans", true}, {"ArialMT", "Liberation Sans", true},
    {"Arial", "Liberation Sans", true},     {"TimesNewRomanPSMT", "Liberation Serif", true},
    {"Courier", "Liberation Mono", true},
};

struct Face {
  std::string_view suffix;
  int weight;
  bool italic = false;
};

constexpr Face kFaces[] = {
    {"UltraLight", 200},
    {"Thin", 250},
    {"Light", 300},
    {"Regular", 400},
    {"Medium", 500},
    {"Semibold", 600},
    {"Bold", 700},
    {"Heavy", 800},
    {"Italic", 400, true},
    {"Oblique", 400, true},
    {"BoldItalic", 700, true},
    {"BoldOblique", 700, true},
    {"MediumItalic", 500, true},
    {"LightItalic", 300, true},
};

struct Resolved {
  const Family* family = nullptr;
  const Face* face = nullptr;  // none: the name says nothing about it
};

// "HelveticaNeue-Medium": the family and, after the hyphen, the face.
Resolved lookUp(std::string_view name) {
  Resolved found;
  const std::size_t hyphen = name.find('-');
  for (const Family& family : kFamilies) {
    if (family.platform == name.substr(0, hyphen)) found.family = &family;
  }
  if (hyphen == std::string_view::npos || !found.family) return found;
  for (const Face& face : kFaces) {
    if (face.suffix == name.substr(hyphen + 1)) found.face = &face;
  }
  if (!found.face) found.family = nullptr;
  return found;
}

struct Language {
  Mutex mutex;
  PangoLanguage* language IOS_GUARDED_BY(mutex) = pango_language_from_string("en");
};

Language& textLanguage() {
  static auto& language = *new Language;
  return language;
}

}  // namespace

void setTextLanguage(const std::string& tag) {
  Language& shared = textLanguage();
  MutexLock lock(shared.mutex);
  shared.language = pango_language_from_string(tag.c_str());
}

PangoFontMap* threadFontMap() {
  thread_local const PangoHandle<PangoFontMap> map = [] {
    PangoFontMap* made = pango_cairo_font_map_new();
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(made), 72);
    return PangoHandle<PangoFontMap>(made);
  }();
  return map.get();
}

PangoHandle<PangoContext> makeTextContext() {
  PangoHandle<PangoContext> context(pango_font_map_create_context(threadFontMap()));
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  pango_cairo_context_set_font_options(context.get(), options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context.get(), FALSE);
  pango_context_set_base_dir(context.get(), PANGO_DIRECTION_LTR);
  Language& shared = textLanguage();
  MutexLock lock(shared.mutex);
  pango_context_set_language(context.get(), shared.language);
  return context;
}

PangoHandle<PangoFontDescription> resolveFont(const FontDescription& font) {
  const Resolved found = lookUp(font.family);
  const Family& family = found.family ? *found.family : kFamilies[0];
  int weight = found.face ? found.face->weight : font.weight;
  // Where there is nothing between regular and bold, a medium face must still stand out.
  if (family.onlyRegularAndBold) weight = weight >= 500 ? 700 : 400;

  PangoHandle<PangoFontDescription> description(pango_font_description_new());
  pango_font_description_set_family_static(description.get(), family.machine);
  pango_font_description_set_weight(description.get(),
                                    static_cast<PangoWeight>(std::clamp(weight, 100, 1000)));
  if (found.face && found.face->italic)
    pango_font_description_set_style(description.get(), PANGO_STYLE_ITALIC);
  constexpr double kLargest = 2000;
  const double size = font.size > 0 ? std::min(font.size, kLargest) : 1;
  pango_font_description_set_absolute_size(description.get(), size * PANGO_SCALE);
  return description;
}

bool fontNamed(const std::string& name, double size, FontDescription& description) {
  const Resolved found = lookUp(name);
  if (!found.family || !pango_font_map_get_family(threadFontMap(), found.family->machine)) return false;
  description = {name, found.face ? found.face->weight : 400, size};
  return true;
}

}  // namespace ios
