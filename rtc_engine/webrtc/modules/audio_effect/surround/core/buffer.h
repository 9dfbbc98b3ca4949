// Memory of the scalar convolvers (fftconvolver.h), which are the definition of right and do not ship:
// aligned arrays of floats, and spectra made of two of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>

namespace fftconvolver {

// The widest vector, and a cache line.
inline constexpr std::size_t kBufferAlignment = 64;

// The usual allocation function where it aligns enough: the other one rounds every size up once more.
inline constexpr bool kAlignsAnyway = kBufferAlignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__;

/** Null when there is no memory. */
inline void* allocateAligned(std::size_t bytes) {
    if constexpr (kAlignsAnyway) return ::operator new(bytes, std::nothrow);
    return ::operator new (bytes, std::align_val_t{kBufferAlignment}, std::nothrow);
}

inline void freeAligned(void* memory) {
    if constexpr (kAlignsAnyway) {
        ::operator delete(memory);
    } else {
        ::operator delete (memory, std::align_val_t{kBufferAlignment});
    }
}

/** An array of numbers that starts at a multiple of 64 bytes. Owns its memory. */
template <typename Number>
class Buffer {
  public:
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    virtual ~Buffer() { release(); }

    /** Hold `count` zeros. Keeps the memory if that is the size already. Without memory data() is null
     *  afterwards, while size() is `count`. */
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

    /** Like resize, but throws std::bad_alloc, and is empty then, when there is no memory. */
    void resizeOrThrow(std::size_t count) {
        resize(count);
        if (count > 0 && data_ == nullptr) {
            resize(0);
            throw std::bad_alloc();
        }
    }

    /** Fill with zeros. */
    void clear() {
        if (data_ != nullptr) std::fill_n(data_, size_, Number{0});
    }

    /** Exchange contents; neither copies nor allocates. */
    void swap(Buffer& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
    }

    Number* data() { return data_; }
    const Number* data() const { return data_; }
    std::size_t size() const { return size_; }
    bool isEmpty() const { return size_ == 0; }

  private:
    void release() {
        freeAligned(data_);
        data_ = nullptr;
    }

    Number* data_ = nullptr;
    std::size_t size_ = 0;
};

/** A spectrum with its real and imaginary parts in arrays of their own. */
class SplitComplex {
  public:
    /** Zeros. Throws std::bad_alloc when memory runs out. */
    explicit SplitComplex(std::size_t bins = 0) { resize(bins); }

    /** Hold `bins` zeros. Throws std::bad_alloc, and is empty then, when memory runs out. */
    void resize(std::size_t bins) {
        size_ = 0;
        re_.resizeOrThrow(bins);
        im_.resizeOrThrow(bins);
        size_ = bins;
    }

    /** Fill with zeros. */
    void clear() {
        re_.clear();
        im_.clear();
    }

    float* re() { return re_.data(); }
    float* im() { return im_.data(); }
    const float* re() const { return re_.data(); }
    const float* im() const { return im_.data(); }
    std::size_t size() const { return size_; }

  private:
    std::size_t size_ = 0;
    Buffer<float> re_;
    Buffer<float> im_;
};

}  // namespace fftconvolver
