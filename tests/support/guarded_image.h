/// Bytes that end at an unreadable page, so that a read past the end kills the program. The pages
/// stay until the program ends.
#pragma once

#include <cstddef>
#include <cstring>
#include <stdexcept>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

class GuardedImage {
 public:
  /// Room for images of up to `capacity` bytes.
  explicit GuardedImage(std::size_t capacity) {
    const std::size_t page = PageSize();
    room_ = (capacity / page + 1) * page;
    start_ = Map(room_ + page);
    if (start_ == nullptr || !Protect(start_ + room_, page)) throw std::runtime_error("no pages");
  }

  unsigned char* Place(const unsigned char* bytes, std::size_t size) {
    unsigned char* image = start_ + room_ - size;
    if (size != 0) std::memcpy(image, bytes, size);
    return image;
  }

 private:
#ifdef _WIN32
  static std::size_t PageSize() {
    SYSTEM_INFO system{};
    ::GetSystemInfo(&system);
    return system.dwPageSize;
  }
  static unsigned char* Map(std::size_t size) {
    return static_cast<unsigned char*>(
        ::VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  }
  static bool Protect(void* page, std::size_t size) {
    DWORD before = 0;
    return ::VirtualProtect(page, size, PAGE_NOACCESS, &before) != 0;
  }
#else
  static std::size_t PageSize() { return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)); }
  static unsigned char* Map(std::size_t size) {
    void* start = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return start == MAP_FAILED ? nullptr : static_cast<unsigned char*>(start);
  }
  static bool Protect(void* page, std::size_t size) {
#ifdef __EMSCRIPTEN__
    return page != nullptr && size != 0;  // its memory has no pages to protect
#else
    return ::mprotect(page, size, PROT_NONE) == 0;
#endif
  }
#endif

  unsigned char* start_ = nullptr;
  std::size_t room_ = 0;
};
