#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Foundation/NSBundle.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// An interface file: a document of Interface Builder (`<name>.xib`) that describes views and how they are
/// connected to the object that loads them. Main thread.
///
/// Views, labels, buttons and image views are made, laid out by frames and autoresizing masks. An outlet is
/// set by the owner's method "set<Outlet>:", an action goes to the method its selector names; both have to
/// stand in the method table of the owner's class. Anything else in a document, and each mistake, is reported
/// in a line on standard error; the rest is loaded.
class UINib : public NSObject {
 public:
  UINib(std::string name, std::shared_ptr<NSBundle> bundle);
  /// The file of that name in `bundle`, or in the main bundle without one. Nothing is read yet.
  static std::shared_ptr<UINib> nibWithNibName(std::string name, std::shared_ptr<NSBundle> bundle);

  /// Makes a new set of the document's objects, connects them to each other and to `owner` (may be empty),
  /// and returns those of the top level. In a document of the folder `Base.lproj` the texts are those of
  /// `<name>.strings` in the user's language, under "<object id>.text" and "<object id>.normalTitle". It is
  /// laid out as in a mirror when the user's first language is written from right to left, unless it lies in
  /// a language's own folder. Returns nothing, with a line on standard error, when there is no such file or
  /// it cannot be read: malformed, larger than 1 MB, deeper than 64 levels or of more than 10,000 elements.
  std::vector<id> instantiateWithOwner(const id& owner) const;

 private:
  std::string name_;
  std::shared_ptr<NSBundle> bundle_;
};

}  // namespace ios
