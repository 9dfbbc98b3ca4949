// Findings of clang-tidy, a few of every family of checks. check-tidy reads them with and without its
// plug-in. Nothing builds this source.

#include "findings.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace unused_alias = std::chrono;
using std::stringstream;

#define DOUBLED(x) x + x
#define GREATER(a, b) ((a) > (b) ? (a) : (b))
#define TWO_STATEMENTS(a) \
    (a) = 1;              \
    (a) += 2

namespace other {
struct later {};
}  // namespace other

namespace findings {

const int loudest = 3;
int __reserved = 1;
static_assert(sizeof(int) >= 2, "wide enough");

struct Copied : Base {
    Copied(const Copied& from) : Base(1), text(from.text) {}
    Copied& operator=(const Copied& from) {
        delete[] data;
        data = new int(*from.data);
        return *this;
    }
    void operator=(int v) { value = v; }
    std::string text;
    int* data = nullptr;
};

struct Moved {
    Moved() = default;
    Moved(Moved&& from) : text(from.text) {}
    Moved& operator=(Moved&& from) {
        text = std::move(from.text);
        return *this;
    }
    std::string text;
};

struct Throws {
    ~Throws() noexcept { throw std::runtime_error("late"); }
};

struct Forwards {
    template <typename T>
    explicit Forwards(T&& t) : text(std::forward<T>(t)) {}
    template <typename T>
    static void pass(T&& t) {
        keep(std::move(t));
    }
    static void keep(std::string s) { stored = s; }
    static std::string stored;
    std::string text;
};

struct Uninitialised {
    Uninitialised() {}
    int first, second;
    Derived derived{1};
};

enum Colours { red = 1, green = 2, blue = 4 };
enum Shapes { round = 1, square = 2, pointed = 4 };

int sum(int first, int second) {
    return first + second;
}

int throwing() noexcept {
    throw 3;
}

void arithmetic(unsigned count, long long wide) {
    for (char c = 0; c < 300; ++c) {
    }
    for (short s = 0; s < static_cast<int>(count); ++s) {
    }
    int n = wide;
    double third = n / 3;
    int rounded = static_cast<int>(third + 0.5);
    long long product = n * n;
    std::size_t bytes = static_cast<std::size_t>(n * rounded);
    if (n == n || product > 3) {
        ++n;
    } else {
        ++n;
    }
    if (n > 3) {
        if (n > 3) {
            --n;
        }
    }
    int repeated = GREATER(n++, rounded);
    third = DOUBLED(repeated) * 2 + std::sin(3) + sizeof(sizeof(int)) + bytes;
    if (n > 2) TWO_STATEMENTS(n);
    if (n < 2)
        ;
    while (n > 4) {
        product += 2;
    }
    sum(/*second=*/1, /*first=*/2);
}

void memory(const char* name, Base* base, bool* flag) {
    Derived derived(3);
    Base sliced = derived;
    std::memset(base, 0, sizeof(Base));
    std::memset(flag, sizeof(bool), 0);
    if (std::strcmp(name, "on")) {
        *flag = true;
    }
    if (flag) {
        sliced.release();
    }
    char* copy = static_cast<char*>(std::malloc(std::strlen(name + 1)));
    std::memcpy(copy, name, std::strlen(name));
    int* lost = new int(3);
    if (base == nullptr) {
        sliced.value = base->value;
    }
    sliced.value = 10 / (sliced.value - sliced.value);
    std::uintptr_t address = reinterpret_cast<std::uintptr_t>(name);
    const char* back = reinterpret_cast<const char*>(address);
    copy[0] = back[0];
    std::unique_ptr<int> first(new int(1)), second;
    second.reset(first.release());
    std::runtime_error("forgotten");
}

std::string strings(const std::map<std::string, int>& counts, std::string text) {
    std::string_view view = std::string("gone");
    std::string repeated(3, 400), null_char("a\0b");
    text = 65;
    const char* words[] = {"one",
                           "two",
                           "three",
                           "four",
                           "five"
                           "six",
                           "seven"};
    for (const std::pair<std::string, int>& count : counts) {
        text = text + count.first + words[0];
    }
    for (auto count : counts) {
        text += count.first;
    }
    std::vector<int> numbers{1, 2};
    std::remove(numbers.begin(), numbers.end(), 1);
    numbers.erase(std::remove(numbers.begin(), numbers.end(), 2));
    numbers.empty();
    Moved moved, target;
    target = std::move(moved);
    text += moved.text + std::string(view) + repeated + null_char;
    const std::string constant = text;
    const std::string copied = constant;
    text.find("a");
    std::function<void()> later = [text] {
        const std::string again = text;
        (void)again.size();
    };
    later();
    if (static_cast<int>(red) | static_cast<int>(square)) {
        text += static_cast<char>(red | square);
    }

    return constant;
}

template <typename T>
T twice(T value, std::string label) {
    return label.empty() ? value : value + value;
}

int caught(Holder<std::string> holder, int unused) {
    try {
        holder.all({"a"});
        std::sort(holder.held.begin(), holder.held.end());
    } catch (std::runtime_error error) {
        return twice(3, error.what());
    }
    do {
        continue;
    } while (false);
    signed char small = -1;
    int widened = small;
    return widened + static_cast<int>(longest({"b"}));
}

}  // namespace findings
