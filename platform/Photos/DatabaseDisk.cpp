// SQLite's access to the disk: the system's own, but each change first asks for injected
// faults (Device/Files.h).

#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "Device/Files.h"
#include "Photos/Private/Database.h"

namespace ios::photos {
namespace {

struct File {
  sqlite3_file base;
  const char* name;  // SQLite keeps it while the file is open; null for an unnamed one
  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

File& fileOf(sqlite3_file* file) {
  return *reinterpret_cast<File*>(file);
}
sqlite3_file* realOf(sqlite3_file* file) {
  return fileOf(file).real();
}

/// SQLite is C: no exception may pass through it.
int refusal(const char* operation, const char* name, int otherwise) noexcept {
  if (!name) return SQLITE_OK;
  try {
    const auto problem = diskRefusal(operation, name);
    if (!problem) return SQLITE_OK;
    return meansNoRoom(problem->code) ? SQLITE_FULL : otherwise;
  } catch (const std::bad_alloc&) {
    return SQLITE_IOERR_NOMEM;
  }
}

int closeFile(sqlite3_file* file) {
  return realOf(file)->pMethods->xClose(realOf(file));
}
int readFile(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
  return realOf(file)->pMethods->xRead(realOf(file), bytes, count, offset);
}
int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
  if (const int code = refusal("write", fileOf(file).name, SQLITE_IOERR_WRITE)) return code;
  return realOf(file)->pMethods->xWrite(realOf(file), bytes, count, offset);
}
int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
  if (const int code = refusal("write", fileOf(file).name, SQLITE_IOERR_TRUNCATE)) return code;
  return realOf(file)->pMethods->xTruncate(realOf(file), size);
}
int syncFile(sqlite3_file* file, int flags) {
  if (const int code = refusal("write", fileOf(file).name, SQLITE_IOERR_FSYNC)) return code;
  return realOf(file)->pMethods->xSync(realOf(file), flags);
}
int sizeOfFile(sqlite3_file* file, sqlite3_int64* size) {
  return realOf(file)->pMethods->xFileSize(realOf(file), size);
}
int lockFile(sqlite3_file* file, int level) {
  return realOf(file)->pMethods->xLock(realOf(file), level);
}
int unlockFile(sqlite3_file* file, int level) {
  return realOf(file)->pMethods->xUnlock(realOf(file), level);
}
int checkLock(sqlite3_file* file, int* result) {
  return realOf(file)->pMethods->xCheckReservedLock(realOf(file), result);
}
int controlFile(sqlite3_file* file, int operation, void* argument) {
  return realOf(file)->pMethods->xFileControl(realOf(file), operation, argument);
}
int sectorSize(sqlite3_file* file) {
  return realOf(file)->pMethods->xSectorSize(realOf(file));
}
int characteristics(sqlite3_file* file) {
  return realOf(file)->pMethods->xDeviceCharacteristics(realOf(file));
}
int mapShared(sqlite3_file* file, int page, int size, int extend, void volatile** memory) {
  return realOf(file)->pMethods->xShmMap(realOf(file), page, size, extend, memory);
}
int lockShared(sqlite3_file* file, int offset, int count, int flags) {
  return realOf(file)->pMethods->xShmLock(realOf(file), offset, count, flags);
}
void sharedBarrier(sqlite3_file* file) {
  realOf(file)->pMethods->xShmBarrier(realOf(file));
}
int unmapShared(sqlite3_file* file, int remove) {
  return realOf(file)->pMethods->xShmUnmap(realOf(file), remove);
}

sqlite3_vfs& systemDisk() {
  return *sqlite3_vfs_find(nullptr);
}

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* granted) {
  static const sqlite3_io_methods kMethods = {
      2,          closeFile,     readFile,    writeFile,   truncateFile, syncFile,        sizeOfFile,
      lockFile,   unlockFile,    checkLock,   controlFile, sectorSize,   characteristics, mapShared,
      lockShared, sharedBarrier, unmapShared, nullptr,     nullptr};
  File& opened = *new (file) File{};
  opened.name = name;
  if ((flags & SQLITE_OPEN_CREATE) && name && ::access(name, F_OK) != 0) {
    if (const int code = refusal("create", name, SQLITE_CANTOPEN)) return code;
  }
  std::memset(opened.real(), 0, static_cast<std::size_t>(systemDisk().szOsFile));
  const int result = systemDisk().xOpen(&systemDisk(), name, opened.real(), flags, granted);
  // Without methods nothing is called on it, closing included.
  opened.base.pMethods = opened.real()->pMethods ? &kMethods : nullptr;
  return result;
}

int removeFile(sqlite3_vfs*, const char* name, int syncFolder) {
  if (const int code = refusal("remove", name, SQLITE_IOERR_DELETE)) return code;
  return systemDisk().xDelete(&systemDisk(), name, syncFolder);
}

}  // namespace

const char* deviceDisk() {
  static constexpr char kName[] = "tellvane-device";
  static const bool registered = [] {
    static sqlite3_vfs disk = systemDisk();
    disk.zName = kName;
    disk.pNext = nullptr;
    disk.szOsFile += static_cast<int>(sizeof(File));
    disk.xOpen = openFile;
    disk.xDelete = removeFile;
    return sqlite3_vfs_register(&disk, 0) == SQLITE_OK;
  }();
  return registered ? kName : nullptr;
}

}  // namespace ios::photos
