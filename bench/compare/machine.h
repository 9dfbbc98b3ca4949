// Where the figures come from: processor, vectors in use, versions of what is compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "report.h"

namespace compare {

/** A set of vector instructions that the library can be held to. */
struct VectorWidth {
    std::string name;     // as Highway calls it
    int doubles;          // in one vector
    std::int64_t target;  // Highway's bit
};

/** Those of this processor that differ in width, narrowest first; the last one is what the library uses. */
std::vector<VectorWidth> vectorWidths();

/** Holds the library to a width as long as it lives. */
class HeldToWidth {
  public:
    explicit HeldToWidth(const VectorWidth& width);
    ~HeldToWidth();
    HeldToWidth(const HeldToWidth&) = delete;
    HeldToWidth& operator=(const HeldToWidth&) = delete;
};

/** Silences standard output, where some handles greet, as long as it lives. */
class QuietStandardOutput {
  public:
    QuietStandardOutput();
    ~QuietStandardOutput();
    QuietStandardOutput(const QuietStandardOutput&) = delete;
    QuietStandardOutput& operator=(const QuietStandardOutput&) = delete;

  private:
    int results_;
};

void describeMachine(const Report& report);

/** Threads of this process now. */
int threadsOfThisProcess();

/** Memory of this process that has pages now, in bytes; the allocator has given back what it can. None where
 * the system does not tell. */
std::optional<std::size_t> residentBytes();

}  // namespace compare
