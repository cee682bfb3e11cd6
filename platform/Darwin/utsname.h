#pragma once

namespace ios {

/// The platform's record of the operating system: five fields of 256 bytes, each a
/// NUL-terminated byte string.
struct utsname {
  char sysname[256];
  char nodename[256];
  char release[256];
  char version[256];
  char machine[256];  // the hardware code: "iPhone7,2"
};

/// Fills the record. 0, or -1 with the record untouched.
int uname(utsname* record);

}  // namespace ios
