#include "Note.h"

namespace Notes {

using namespace ios;

std::shared_ptr<UIColor> inkColor() {
  return UIColor::colorWithHex(0x1C1C1E);
}
std::shared_ptr<UIColor> faintColor() {
  return UIColor::colorWithHex(0x8A8A8E);
}
std::shared_ptr<UIColor> lineColor() {
  return UIColor::colorWithHex(0xE2E0DA);
}
std::shared_ptr<UIColor> paperColor() {
  return UIColor::colorWithHex(0xFDFCF8);
}
std::shared_ptr<UIColor> tintColor() {
  return UIColor::colorWithHex(0xC98A00);
}

std::string Note::snippet() const {
  std::string line;
  for (const char c : body) {
    const char shown = c == '\n' ? ' ' : c;
    if (shown != ' ' || !line.ends_with(' ')) line += shown;
  }
  return line;
}

}  // namespace Notes
