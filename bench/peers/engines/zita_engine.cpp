#include "engines.h"

#include <zita-convolver.h>

#include <sched.h>
#include <algorithm>
#include <stdexcept>

namespace compare {
namespace {

constexpr unsigned kPartition_frames = 256;

void check(int result, const char* what) {
    if (result != 0) throw std::runtime_error(std::string("zita-convolver: ") + what + " failed");
}

class Matrix {
  public:
    explicit Matrix(const Stage& stage) : channels_(stage.channels) {
        convproc_.set_options(Convproc::OPT_FFTW_MEASURE | Convproc::OPT_VECTOR_MODE);
        check(convproc_.configure(static_cast<unsigned>(channels_), 2,
                                  static_cast<unsigned>(stage.longestResponse()), kPartition_frames,
                                  kPartition_frames, kPartition_frames, 0.0F),
              "configure");
        for (const Path& path : stage.paths) {
            std::vector<float> response = path.response;  // impdata_create takes a non-const pointer
            check(
                convproc_.impdata_create(static_cast<unsigned>(path.channel), static_cast<unsigned>(path.ear),
                                         1, response.data(), 0, static_cast<int>(response.size())),
                "impdata_create");
        }
        check(convproc_.start_process(0, SCHED_OTHER), "start_process");
    }
    Matrix(const Matrix&) = delete;
    Matrix& operator=(const Matrix&) = delete;
    ~Matrix() {
        convproc_.stop_process();
        convproc_.cleanup();
    }

    float* in(std::size_t channel) { return convproc_.inpdata(static_cast<unsigned>(channel)); }
    const float* out(std::size_t ear) { return convproc_.outdata(static_cast<unsigned>(ear)); }
    void process() { check(convproc_.process(true), "process"); }

  private:
    std::size_t channels_;
    Convproc convproc_;
};

class ZitaEngine : public Engine {
  public:
    ZitaEngine(const Layout& layout, const Material& material)
        : Engine("zita-convolver"), planes_(material.planes()) {
        for (const Stage& stage : layout.stages) matrices_.push_back(std::make_unique<Matrix>(stage));
    }

    std::size_t callFrames() const override { return kPartition_frames; }

    void process(std::size_t first_frame) override {
        for (std::size_t channel = 0; channel < planes_.size(); ++channel) {
            std::copy_n(planes_[channel].data() + first_frame, kPartition_frames,
                        matrices_.front()->in(channel));
        }
        matrices_.front()->process();
        for (std::size_t i = 1; i < matrices_.size(); ++i) {
            for (const std::size_t ear : {0U, 1U}) {
                std::copy_n(matrices_[i - 1]->out(ear), kPartition_frames, matrices_[i]->in(ear));
            }
            matrices_[i]->process();
        }
    }

    void appendOutput(Ears& ears) override {
        for (std::size_t i = 0; i < kPartition_frames; ++i) {
            ears.push_back(matrices_.back()->out(0)[i]);
            ears.push_back(matrices_.back()->out(1)[i]);
        }
    }

  private:
    std::vector<std::vector<float>> planes_;
    std::vector<std::unique_ptr<Matrix>> matrices_;
};

}  // namespace

std::unique_ptr<Engine> makeZitaEngine(const Layout& layout, const Material& material) {
    return std::make_unique<ZitaEngine>(layout, material);
}

std::string zitaVersion() {
    return std::to_string(zita_convolver_major_version()) + "." +
           std::to_string(zita_convolver_minor_version());
}

}  // namespace compare
