// Memory of the scalar convolvers (fftconvolver.h), which are the reference and do not ship: aligned arrays
// of floats, and spectra made of two such arrays.
//
// Use: Buffer<float> samples; samples.resizeOrThrow(512); SplitComplex spectrum(257);
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>

namespace fftconvolver {

/** Alignment in bytes: the widest vector, and a cache line. */
inline constexpr std::size_t kBufferAlignment = 64;

/** True if plain operator new aligns enough. It is then preferred: the aligned one rounds every size up once
 *  more. */
inline constexpr bool kAlignsAnyway = kBufferAlignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__;

/** Allocates at a multiple of kBufferAlignment; the caller frees with freeAligned. Returns null when memory
 *  runs out. [any, concurrent] not real-time safe */
inline void* allocateAligned(std::size_t bytes) {
    if constexpr (kAlignsAnyway) return ::operator new(bytes, std::nothrow);
    return ::operator new (bytes, std::align_val_t{kBufferAlignment}, std::nothrow);
}

/** Frees memory from allocateAligned; null is harmless. [any, concurrent] not real-time safe */
inline void freeAligned(void* memory) {
    if constexpr (kAlignsAnyway) {
        ::operator delete(memory);
    } else {
        ::operator delete (memory, std::align_val_t{kBufferAlignment});
    }
}

/** An array of numbers that starts at a multiple of 64 bytes and owns its memory. */
template <typename Number>
class Buffer {
  public:
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    /** Frees the memory. [any] not real-time safe */
    virtual ~Buffer() { release(); }

    /** Resizes the array to `count` zeros; keeps the memory if the size does not change. When memory runs
     *  out, data() is null afterwards while size() is `count`. [any] not real-time safe: allocates */
    void resize(std::size_t count) {
        if (count != size_) {
            release();
            if (count > 0 && count <= std::numeric_limits<std::size_t>::max() / sizeof(Number)) {
                data_ = static_cast<Number*>(allocateAligned(count * sizeof(Number)));
            }
            size_ = count;
        }
        clear();
    }

    /** Like resize, but throws std::bad_alloc and leaves the array empty when memory runs out.
     *  [any] not real-time safe: allocates */
    void resizeOrThrow(std::size_t count) {
        resize(count);
        if (count > 0 && data_ == nullptr) {
            resize(0);
            throw std::bad_alloc();
        }
    }

    /** Fills the array with zeros. [any] real-time safe */
    void clear() {
        if (data_ != nullptr) std::fill_n(data_, size_, Number{0});
    }

    /** Exchanges the contents without copying them. [any] real-time safe */
    void swap(Buffer& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
    }

    /** The numbers, owned by the buffer; null if there are none. [any] real-time safe */
    Number* data() { return data_; }
    /** The numbers, owned by the buffer; null if there are none. [any] real-time safe */
    const Number* data() const { return data_; }
    /** Count of numbers. [any] real-time safe */
    std::size_t size() const { return size_; }
    /** True if size() is 0. [any] real-time safe */
    bool isEmpty() const { return size_ == 0; }

  private:
    void release() {
        freeAligned(data_);
        data_ = nullptr;
    }

    Number* data_ = nullptr;
    std::size_t size_ = 0;
};

/** A spectrum with separate arrays for its real and its imaginary parts. */
class SplitComplex {
  public:
    /** Starts with `bins` zeros. Throws std::bad_alloc when memory runs out.
     *  [any] not real-time safe: allocates */
    explicit SplitComplex(std::size_t bins = 0) { resize(bins); }

    /** Makes the spectrum `bins` zeros. Throws std::bad_alloc and leaves size() at 0 when memory runs out.
     *  [any] not real-time safe: allocates */
    void resize(std::size_t bins) {
        size_ = 0;
        re_.resizeOrThrow(bins);
        im_.resizeOrThrow(bins);
        size_ = bins;
    }

    /** Fills the spectrum with zeros. [any] real-time safe */
    void clear() {
        re_.clear();
        im_.clear();
    }

    /** Real parts, [size()]. [any] real-time safe */
    float* re() { return re_.data(); }
    /** Imaginary parts, [size()]. [any] real-time safe */
    float* im() { return im_.data(); }
    /** Real parts, [size()]. [any] real-time safe */
    const float* re() const { return re_.data(); }
    /** Imaginary parts, [size()]. [any] real-time safe */
    const float* im() const { return im_.data(); }
    /** Count of bins. [any] real-time safe */
    std::size_t size() const { return size_; }

  private:
    std::size_t size_ = 0;
    Buffer<float> re_;
    Buffer<float> im_;
};

}  // namespace fftconvolver
