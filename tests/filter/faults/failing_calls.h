#pragma once

#include <string>
#include <vector>

namespace test {

/** Makes calls of the FFmpeg libraries fail that the filter makes inside `during`, and counts them. Only one
 *  object may live at a time. */
class FailingCalls {
  public:
    /** @param function one of functions(); empty: nothing fails.
     *  @param number   of the call that fails, counted from 1. */
    explicit FailingCalls(const std::string& function = {}, int number = 0);
    ~FailingCalls();
    FailingCalls(const FailingCalls&) = delete;
    FailingCalls& operator=(const FailingCalls&) = delete;

    template <typename Work>
    auto during(Work&& work) {
        const Counting counting;
        return work();
    }

    /** Returns the calls of a function so far. */
    int calls(const std::string& function) const;

    /** Returns the names of all functions that can fail here. */
    static const std::vector<std::string>& functions();

  private:
    struct Counting {
        Counting();
        ~Counting();
    };
};

}  // namespace test
