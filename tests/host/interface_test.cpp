// Pins the vtable slots of the interfaces' virtual functions. Calls to a filter that was built against
// another copy of these headers must still reach the right function.
#include <gtest/gtest.h>

#include <cstring>

#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"

namespace Vorlin {
namespace {

// Returns the vtable slot of a virtual member function. In the Itanium C++ ABI a pointer to such a function
// holds the byte offset of its slot plus 1. Arm, where code addresses may be odd, marks it in the lowest bit
// of the second word instead.
template <typename Member>
std::ptrdiff_t slotOf(Member member) {
    struct {
        std::ptrdiff_t address;
        std::ptrdiff_t adjustment;
    } raw;
    static_assert(sizeof raw == sizeof member);
    std::memcpy(&raw, &member, sizeof raw);
#if defined(__aarch64__) || defined(__arm__)
    EXPECT_EQ(raw.adjustment & 1, 1) << "the member function is not virtual";
    const std::ptrdiff_t offset = raw.address;
#else
    EXPECT_EQ(raw.address & 1, 1) << "the member function is not virtual";
    const std::ptrdiff_t offset = raw.address - 1;
#endif
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(HostVtables, KeepTheSlotsOfTheFilterFunctions) {
    EXPECT_EQ(slotOf(&IAudioFilter::setOption), 2);
    EXPECT_EQ(slotOf(&IAudioFilter::init), 3);
    EXPECT_EQ(slotOf(&IAudioFilter::push), 4);
    EXPECT_EQ(slotOf(&IAudioFilter::pull), 5);
    EXPECT_EQ(slotOf(&IAudioFilter::flush), 6);
    EXPECT_EQ(slotOf(&IAudioFilter::getName), 7);
    EXPECT_EQ(slotOf(&IAudioFilter::is_supported), 8);
    EXPECT_EQ(slotOf(&IAudioFilter::clone), 9);
    EXPECT_EQ(slotOf(&IAudioFilter::setInvalid), 10);
    EXPECT_EQ(slotOf(&IAudioFilter::isInvalid), 11);
    EXPECT_EQ(slotOf(&IAudioFilter::setDCA), 12);
    EXPECT_EQ(slotOf(&IAudioFilter::setCurrentTarget), 13);
    EXPECT_EQ(slotOf(&IAudioFilter::isOverFps), 14);
    EXPECT_EQ(slotOf(&IAudioFilter::checkTimeConsume), 15);
}

// A destructor has no pointer to member, but the first function after it occupies the next slot.
TEST(HostVtables, BeginWithTwoDestructorSlots) {
    struct AfterPrototype : filterPrototype {
        virtual void next() {}
    };
    EXPECT_EQ(slotOf(&AfterPrototype::next), 2)
        << "filterPrototype has virtual functions besides its destructors";
    EXPECT_EQ(slotOf(&IFilter::setOption), 2);
}

TEST(HostVtables, HoldTheFrameDescriptionBehindTheDestructors) {
    EXPECT_EQ(slotOf(&IQFFrame::getInfo), 2);
}

}  // namespace
}  // namespace Vorlin
