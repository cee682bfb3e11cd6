#include <cstdio>
#include <random>

#include "Photos/Private/Identifier.h"

namespace ios::photos {
namespace {

constexpr std::size_t kLength = 36;

std::string_view ending(Kind kind) {
  return kind == Kind::asset ? "/L0/001" : "/L0/040";
}

/// A one-to-one mixing of 64 bits.
std::uint64_t mixed(std::uint64_t value) {
  value += 0x9E3779B97F4A7C15;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

std::string written(std::uint64_t high, std::uint64_t low) {
  high = (high & 0xFFFFFFFFFFFF0FFF) | 0x4000;             // version 4
  low = (low & 0x3FFFFFFFFFFFFFFF) | 0x8000000000000000U;  // variant 1
  char text[kLength + 1];
  std::snprintf(text, sizeof text, "%08X-%04X-%04X-%04X-%012llX", static_cast<unsigned>(high >> 32),
                static_cast<unsigned>(high >> 16 & 0xFFFF), static_cast<unsigned>(high & 0xFFFF),
                static_cast<unsigned>(low >> 48), static_cast<unsigned long long>(low & 0xFFFFFFFFFFFF));
  return text;
}

}  // namespace

bool isUUID(std::string_view text) {
  if (text.size() != kLength) return false;
  for (std::size_t index = 0; index < kLength; ++index) {
    const char c = text[index];
    const bool dash = index == 8 || index == 13 || index == 18 || index == 23;
    const bool digit = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
    if (dash ? c != '-' : !digit) return false;
  }
  return true;
}

std::string localIdentifier(Kind kind, const std::string& uuid) {
  return uuid + std::string(ending(kind));
}

std::optional<std::string> uuidOf(Kind kind, std::string_view localIdentifier) {
  if (localIdentifier.size() < kLength || localIdentifier.substr(kLength) != ending(kind))
    return std::nullopt;
  const std::string_view uuid = localIdentifier.substr(0, kLength);
  if (!isUUID(uuid)) return std::nullopt;
  return std::string(uuid);
}

std::string randomUUID() {
  std::random_device device;
  const auto word = [&] { return std::uint64_t{device()} << 32 | device(); };
  return written(word(), word());
}

std::string derivedUUID(std::uint64_t library, std::uint64_t count) {
  // The low half keeps 62 bits of a one-to-one function of `count`'s; the high half tells libraries apart.
  return written(mixed(library ^ mixed(count)), mixed(count + mixed(library)));
}

}  // namespace ios::photos
