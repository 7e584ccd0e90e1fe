// SPDX-License-Identifier: MIT
// Linked into a copy of the program: makes one allocation fail, the one whose number
// TRELVANE_STARVE gives, counted from the start of main. What the program asks of the C library and
// of operator new counts; what other libraries ask of the C library does not. At the end, the
// number of allocations goes into the file that TRELVANE_STARVE_COUNT names, if it names one.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> count = 0;
long failing = -1;  // none; 0 to begin with, so that the first has the number 1
bool counting = false;

bool Fails() { return counting && ++count == failing; }

}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t number, std::size_t size);
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);
int __real_main(int argc, char** argv);

void* __wrap_malloc(std::size_t size) { return Fails() ? nullptr : __real_malloc(size); }
void* __wrap_calloc(std::size_t number, std::size_t size) {
  return Fails() ? nullptr : __real_calloc(number, size);
}
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __real_aligned_alloc(alignment, size);
}

int __wrap_main(int argc, char** argv) {
  const char* number = std::getenv("TRELVANE_STARVE");
  if (number != nullptr) failing = std::atol(number);
  counting = true;
  const int code = __real_main(argc, argv);
  counting = false;
  if (const char* path = std::getenv("TRELVANE_STARVE_COUNT")) {
    if (std::FILE* file = std::fopen(path, "w")) {
      static_cast<void>(std::fprintf(file, "%ld\n", count.load()));
      static_cast<void>(std::fclose(file));
    }
  }
  return code;
}
}

void* operator new(std::size_t size) {
  void* block = Fails() ? nullptr : __real_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Fails() ? nullptr : __real_malloc(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
