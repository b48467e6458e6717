#include "base/byte_buffer.h"

#include <sys/mman.h>

#include <cstdint>

namespace tevra::detail {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

std::size_t roundUp(std::size_t bytes) {
    return (bytes + kHugePage - 1) & ~(kHugePage - 1);
}

}  // namespace

void* allocateLarge(std::size_t bytes) {
    // Map one huge page more than needed, then cut the region down to an
    // aligned one so that the kernel can back it with huge pages.
    const std::size_t size = roundUp(bytes);
    void* raw =
        mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) {
        throw std::bad_alloc();
    }
    const auto base = reinterpret_cast<std::uintptr_t>(raw);
    const auto aligned = (base + kHugePage - 1) & ~(std::uintptr_t{kHugePage} - 1);
    if (aligned > base) {
        munmap(raw, aligned - base);
    }
    const std::uintptr_t tail = aligned + size;
    const std::uintptr_t end = base + size + kHugePage;
    if (end > tail) {
        munmap(reinterpret_cast<void*>(tail), end - tail);
    }
    void* p = reinterpret_cast<void*>(aligned);
    madvise(p, size, MADV_HUGEPAGE);  // a hint: without huge pages it works as before
    return p;
}

void deallocateLarge(void* p, std::size_t bytes) noexcept {
    munmap(p, roundUp(bytes));
}

}  // namespace tevra::detail
