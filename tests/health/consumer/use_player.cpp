// Loads the plug-in and passes one frame through it, as docs/embedding.md shows.
#include <vorlin/av_frame.h>
#include <vorlin/player.h>

#include <iostream>

int main(int argc, char** argv) {
    std::string error;
    auto plugin = Vorlin::Plugin::load(argc > 1 ? argv[1] : "libSonivexFilter.so", error);
    int frames = 0;
    auto player = Vorlin::Player::create(plugin, {}, [&](std::unique_ptr<Vorlin::IQFFrame>) { ++frames; });
    if (!player) {
        std::cerr << error << '\n';
        return 1;
    }
    player->setOptions(R"({"enable_normalizer": true})");
    player->push(std::make_unique<Vorlin::AVQFFrame>(nullptr));
    player->drain();
    return frames == 1 && player->filter().getName() == "SonivexFilter" ? 0 : 1;
}
