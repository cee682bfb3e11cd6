#pragma once

namespace tellvane {

/// The library extends classes of the platform while it is loaded, from a source file that nothing else
/// calls. A linker takes only such files out of a static library as something refers to; this reference keeps
/// that one in.
void keepCategories();

}  // namespace tellvane
