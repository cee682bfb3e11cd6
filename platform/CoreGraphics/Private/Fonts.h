#pragma once

#include <pango/pangocairo.h>

#include <memory>

#include "CoreGraphics/Text.h"

namespace ios {

struct PangoDeleter {
  void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
  void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
  void operator()(PangoLayoutIter* iterator) const { pango_layout_iter_free(iterator); }
  void operator()(PangoLayout* layout) const { g_object_unref(layout); }
  void operator()(PangoContext* context) const { g_object_unref(context); }
  void operator()(PangoFontMap* map) const { g_object_unref(map); }
};
template <class T>
using PangoHandle = std::unique_ptr<T, PangoDeleter>;

/// The calling thread's fonts; they live until it ends.
PangoFontMap* threadFontMap();
/// A context for layouts in points, whose metrics do not depend on the scale they are drawn at.
PangoHandle<PangoContext> makeTextContext();
/// The machine's font that stands in for the platform's.
PangoHandle<PangoFontDescription> resolveFont(const FontDescription& font);

}  // namespace ios
