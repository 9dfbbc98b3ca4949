// The machine that the figures come from: processor, vectors in use, versions of the compared libraries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "report.h"

namespace compare {

/** A set of vector instructions that the library can be restricted to. */
struct VectorWidth {
    std::string name;     // Highway's name
    int doubles;          // per vector
    std::int64_t target;  // Highway's bit
};

/** The best instruction set of each width on this processor, narrowest first; the library uses the last. */
std::vector<VectorWidth> vectorWidths();

/** Restricts the library to a vector width for the lifetime of this object. */
class HeldToWidth {
  public:
    explicit HeldToWidth(const VectorWidth& width);
    ~HeldToWidth();
    HeldToWidth(const HeldToWidth&) = delete;
    HeldToWidth& operator=(const HeldToWidth&) = delete;
};

/** Silences standard output for the lifetime of this object; some handles print there when created. */
class QuietStandardOutput {
  public:
    QuietStandardOutput();
    ~QuietStandardOutput();
    QuietStandardOutput(const QuietStandardOutput&) = delete;
    QuietStandardOutput& operator=(const QuietStandardOutput&) = delete;

  private:
    int results_;
};

/** Adds notes on the processor, its load, the vectors in use, the compiler and the compared libraries. */
void describeMachine(const Report& report);

/** Current number of threads of this process. */
int threadsOfThisProcess();

/** Resident memory of this process in bytes, after the allocator has returned what it can. Empty if the
 *  system does not report it. */
std::optional<std::size_t> residentBytes();

}  // namespace compare
