#pragma once

// Findings of clang-tidy in a header: see findings.cpp.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

int definedInHeader() {
    return 3;
}

namespace findings {

struct Base {
    explicit Base(int v) : value(v) {}
    Base(const Base&) = default;
    Base& operator=(const Base&) = default;
    virtual ~Base() = default;
    virtual int level() const { return value; }
    virtual void release() {}
    int value;
};

struct Derived : Base {
    Derived(int v) : Base(v) {}
    int level() const override { return 0; }
    void releasee() {}
    int extra;
};

template <typename T>
struct Holder {
    Holder(T t) : held(t) {}
    std::vector<T> all(const std::vector<T>& from) {
        std::vector<T> result;
        for (int i = 0; i < 4; ++i) {
            result.push_back(from[static_cast<std::size_t>(i)]);
        }
        return result;
    }
    T held;
};

inline std::size_t longest(std::vector<std::string> names) {
    std::size_t length = 0;
    for (const std::string name : names) {
        length = name.size() > length ? name.size() : length;
    }
    return length;
}

struct later;

}  // namespace findings
