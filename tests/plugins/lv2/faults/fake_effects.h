// Effects in place of the library's, which fail when a test asks for it and count what is alive.
#pragma once

namespace test {

/** Tells the fake effects what to do, and records what they have seen. */
struct FakeEffects {
    int alive = 0;
    int made = 0;
    int next_status = 0;   // SonivexStatus of the creations from now on
    int missing_kind = 0;  // SonivexEffectKind that this "build" lacks
};

FakeEffects& fakeEffects();

}  // namespace test
