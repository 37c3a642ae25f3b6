// The program's allocator: that of the C library, with large blocks in large pages. A conversion
// touches most of its memory once, and a fault for every 4 KiB of it costs more than filling them.
// Where the system gives no large pages, nothing changes. docs/benchmarks.md tells what they save.

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>
#include <new>

// NOLINTBEGIN(cppcoreguidelines-no-malloc): this is what "new" is made of

namespace {

constexpr std::size_t largePage = std::size_t{1} << 21U;

void* allocate(std::size_t size) {
    if (size < largePage) {
        return std::malloc(size != 0 ? size : 1);
    }
    void* block = nullptr;
    if (posix_memalign(&block, largePage, size) != 0) {
        return nullptr;
    }
    madvise(block, size, MADV_HUGEPAGE);
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* const block = allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

// NOLINTEND(cppcoreguidelines-no-malloc)
