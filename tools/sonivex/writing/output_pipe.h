#pragma once

#include "output.h"

namespace sonivex_tool {

/** Standard output as a destination. The data goes out as it is encoded, and nothing can be taken back. */
class OutputPipe : public Output {
  public:
    /** @param descriptor of standard output; it stays the caller's
     * @throw Failure (OutputNotWritable) if it is a terminal; std::bad_alloc */
    explicit OutputPipe(int descriptor);

    void commit() override;

  private:
    int writeAll(const uint8_t* data, size_t bytes) override;

    int descriptor_;
};

}  // namespace sonivex_tool
