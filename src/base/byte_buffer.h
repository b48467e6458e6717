#pragma once

#include <cstddef>
#include <new>
#include <string>

namespace tevra {

namespace detail {

// AddressSanitizer guards only the memory its own allocator hands out, so its
// builds take large buffers from there too: an overflow of an audio buffer or
// a request body must show in the tests.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool mapsLargeBuffers = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool mapsLargeBuffers = false;
#else
inline constexpr bool mapsLargeBuffers = true;
#endif
#else
inline constexpr bool mapsLargeBuffers = true;
#endif

void* allocateLarge(std::size_t bytes);
void deallocateLarge(void* p, std::size_t bytes) noexcept;
}  // namespace detail

// Allocates buffers of a megabyte or more straight from the kernel in
// transparent huge pages. A 180 s recording is about 6 MB; touching that much
// fresh memory in 4 KB pages costs more than encoding it, on virtual machines
// many times more.
template <typename T>
struct LargeBufferAllocator {
    using value_type = T;
    static constexpr std::size_t kLargeBytes = std::size_t{1} << 20;

    LargeBufferAllocator() noexcept = default;
    template <typename U>
    LargeBufferAllocator(const LargeBufferAllocator<U>&) noexcept {}

    T* allocate(std::size_t n) {
        const std::size_t bytes = n * sizeof(T);
        if (detail::mapsLargeBuffers && bytes >= kLargeBytes) {
            return static_cast<T*>(detail::allocateLarge(bytes));
        }
        return std::allocator<T>().allocate(n);
    }
    void deallocate(T* p, std::size_t n) noexcept {
        const std::size_t bytes = n * sizeof(T);
        if (detail::mapsLargeBuffers && bytes >= kLargeBytes) {
            detail::deallocateLarge(p, bytes);
        } else {
            std::allocator<T>().deallocate(p, n);
        }
    }
    template <typename U>
    bool operator==(const LargeBufferAllocator<U>&) const noexcept {
        return true;
    }
};

// Bytes of audio and of request bodies built from it.
using ByteBuffer = std::basic_string<char, std::char_traits<char>, LargeBufferAllocator<char>>;

}  // namespace tevra
