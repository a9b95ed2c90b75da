// Speed of the vector libraries through the public calls: the same transform on processors at
// vector level 0 (the scalar engine alone), 1 (SSE4.1 library) and 2 (AVX2 library), on a
// 3840x2160 frame of random pixels and on a smooth one, with a memcpy of the input as the
// bandwidth bound. Prints the median of several runs in ns/pixel and the ratios, and checks that
// every level wrote the same output. Times are the thread's CPU time, which on a quiet machine
// equals the elapsed time and on a busy one leaves out the time the thread waited for a core.
// The runs of the three levels and of the memcpy take turns, so that a slower spell of a shared
// machine falls on all of them rather than on one, and the ratios compare like with like.
//
// Case (a)'s tables are, by default, ones that scatter a smooth image's values over the whole
// range (the input tables multiply by 7), so its output look-ups land anywhere. With
// --tone-curves they are gamma curves instead, as a photographer's would be, and the look-ups of
// a smooth image walk through each table in order. With --gentle the smooth image's gradients
// are a tenth as steep, like most of a photograph's, so consecutive look-ups often share a cache
// line.
//
//   vector_bench [runs] [--tone-curves] [--gentle]        (default 7 runs)
#include <corvane_xvr_color_processing.h>

#include "modules/loaded_vector_library.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <time.h>

namespace {

constexpr int32_t width = 3840;
constexpr int32_t height = 2160;
constexpr int32_t pixel_count = width * height;
constexpr std::size_t samples = 3 * static_cast<std::size_t>(pixel_count);

double thread_cpu_ns()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// The median ns/pixel of each piece of work over `runs` rounds, each round running every piece
// once in turn.
std::vector<double> medians_taking_turns(int runs, const std::vector<std::function<void()>>& works)
{
    std::vector<std::vector<double>> times(works.size());
    for (int run = 0; run < runs; ++run) {
        for (std::size_t w = 0; w < works.size(); ++w) {
            const double begin = thread_cpu_ns();
            works[w]();
            times[w].push_back((thread_cpu_ns() - begin) / pixel_count);
        }
    }
    std::vector<double> medians;
    for (auto& t : times) {
        std::sort(t.begin(), t.end());
        medians.push_back(t[t.size() / 2]);
    }
    return medians;
}

std::vector<uint16_t> random_frame()
{
    std::vector<uint16_t> frame(samples);
    std::mt19937 random(42);
    for (auto& sample : frame) sample = static_cast<uint16_t>(random());
    return frame;
}

// Waves across the frame, different per channel, like the steepest gradients of a photograph:
// neighbouring pixels differ by up to about 100 codes (10 when `gentle`), so consecutive look-ups
// walk through a table in order rather than at random, yet still reach a new cache line at almost
// every pixel.
std::vector<uint16_t> smooth_frame(bool gentle)
{
    const double scale = gentle ? 10.0 : 1.0;
    std::vector<uint16_t> frame(samples);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x);
            for (std::size_t c = 0; c < 3; ++c) {
                const double wave = std::sin(x / (scale * (300.0 + 70.0 * c)) + y / (scale * (450.0 - 50.0 * c)) + c);
                frame[3 * i + c] = static_cast<uint16_t>(32768.0 + 30000.0 * wave * (0.6 + 0.4 * x / width));
            }
        }
    }
    return frame;
}

struct Case {
    const char* name;
    NQ_COLOR_FORMAT input_format, output_format;
    bool tables;
    int32_t shift;
    bool eight_bit, fourth_channel;
};

const Case cases[] = {
    {"(a) BGR pixels in, six tables, fourth channel, BGR pixels out, 16-bit", NQ_COLOR_FORMAT_BGR_PIXEL,
     NQ_COLOR_FORMAT_BGR_PIXEL, true, 0, false, true},
    {"(b) planar in, no tables, right shift 8, planar out, 8-bit", NQ_COLOR_FORMAT_BGR_PLANAR,
     NQ_COLOR_FORMAT_BGR_PLANAR, false, -8, true, false},
    {"(c) BGR pixels in, no tables, BGR pixels out, 16-bit (the colour matrix alone)", NQ_COLOR_FORMAT_BGR_PIXEL,
     NQ_COLOR_FORMAT_BGR_PIXEL, false, 0, false, false},
};

enum class Tables { scattering, tone_curves };

// Entry k of table t: input tables 0..2, output tables 3..5. The scattering input tables also set
// bits above the 16 the matrix reads.
int32_t table_entry(Tables kind, int t, int32_t k)
{
    if (kind == Tables::scattering) return t < 3 ? ((k * 7 + t) & 0xFFFF) | (t << 20) : 65535 - k;
    const double gamma = t < 3 ? 1.0 / (2.0 + 0.1 * t) : 2.2 + 0.1 * (t - 3);
    return static_cast<int32_t>(65535.0 * std::pow(k / 65535.0, gamma) + 0.5);
}

class Processor {
public:
    Processor(int level, Tables kind) : m_handle(nq_color_create_color_processor_test(16, 16, level))
    {
        if (m_handle == nullptr) return;
        const float matrix[9] = {1.164f, 0.0f, 1.596f, 1.164f, -0.392f, -0.813f, 1.164f, 2.017f, 0.0f};
        nq_color_append_matrix(m_handle, matrix);
        int32_t* (*const getters[6])(void*) = {nq_color_get_blue_input_LUT,  nq_color_get_green_input_LUT,
                                               nq_color_get_red_input_LUT,   nq_color_get_blue_output_LUT,
                                               nq_color_get_green_output_LUT, nq_color_get_red_output_LUT};
        for (int t = 0; t < 6; ++t) {
            int32_t* table = getters[t](m_handle);
            for (int32_t k = 0; k < 65536; ++k) table[k] = table_entry(kind, t, k);
        }
    }
    ~Processor() { nq_color_destroy_color_processor(m_handle); }
    Processor(const Processor&) = delete;
    Processor& operator=(const Processor&) = delete;

    bool made() const { return m_handle != nullptr; }

    // Outside the timed runs: enabling the tables is a call of its own, not part of a transform.
    void use_tables(bool on) const
    {
        nq_color_enable_input_LUTs(m_handle, on, on, on);
        nq_color_enable_output_LUTs(m_handle, on, on, on);
    }

    int run(const Case& c, const std::vector<uint16_t>& input, void* output) const
    {
        const int32_t s = c.shift;
        if (c.eight_bit) {
            auto* out = static_cast<uint8_t*>(output);
            return (c.fourth_channel ? nq_color_transform_48_to_32 : nq_color_transform_48_to_24)(
                m_handle, input.data(), c.input_format, 0, 65535, 0, 65535, 0, 65535, s, s, s, out, c.output_format,
                pixel_count);
        }
        auto* out = static_cast<uint16_t*>(output);
        return (c.fourth_channel ? nq_color_transform_48_to_64 : nq_color_transform_48_to_48)(
            m_handle, input.data(), c.input_format, 0, 65535, 0, 65535, 0, 65535, s, s, s, out, c.output_format,
            pixel_count);
    }

private:
    void* m_handle;
};

std::size_t output_bytes(const Case& c)
{
    return static_cast<std::size_t>(pixel_count) * (c.fourth_channel ? 4 : 3) * (c.eight_bit ? 1 : 2);
}

}  // namespace

int main(int argc, char** argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    auto option = [&](const char* name) {
        for (int k = 2; k < argc; ++k) {
            if (std::strcmp(argv[k], name) == 0) return true;
        }
        return false;
    };
    const Tables tables = option("--tone-curves") ? Tables::tone_curves : Tables::scattering;
    const bool gentle = option("--gentle");
    if (nq_color_processing_module_initialize() != NQ_COLOR_NO_ERROR) {
        std::fprintf(stderr, "libcorvane_xvr_LUT.so not found\n");
        return 1;
    }
    int status = 0;
    {
        const Processor processors[3] = {Processor(0, tables), Processor(1, tables), Processor(2, tables)};
        const bool active[3] = {true, loaded_vector_library(1).starts, loaded_vector_library(2).starts};
        std::printf("%d x %d pixels, median of %d runs, ns/pixel; SSE4.1 library %s, AVX2 library %s; tables of (a): %s\n",
                    width, height, runs, active[1] ? "active" : "NOT ACTIVE", active[2] ? "active" : "NOT ACTIVE",
                    tables == Tables::tone_curves ? "tone curves" : "scattering");
        const std::vector<uint16_t> frames[2] = {random_frame(), smooth_frame(gentle)};
        const char* frame_names[2] = {"random", gentle ? "gentle" : "smooth"};
        std::vector<uint16_t> copy(samples);
        std::printf("memcpy: of the same input (6 bytes/pixel), beside each case\n");
        for (const Case& c : cases) {
            std::printf("%s\n", c.name);
            for (int f = 0; f < 2; ++f) {
                std::vector<uint8_t> outputs[3];
                std::vector<std::function<void()>> works;
                for (int level = 0; level < 3; ++level) {
                    processors[level].use_tables(c.tables);
                    outputs[level].assign(output_bytes(c), 0);
                    works.push_back([&, level] { processors[level].run(c, frames[f], outputs[level].data()); });
                }
                works.push_back([&] { std::memcpy(copy.data(), frames[f].data(), samples * sizeof(uint16_t)); });
                const std::vector<double> ns = medians_taking_turns(runs, works);
                const bool identical = outputs[0] == outputs[1] && outputs[0] == outputs[2];
                std::printf("  %-6s  scalar %6.2f   SSE4.1 %5.2f (%4.1fx)   AVX2 %5.2f (%4.1fx)   "
                            "memcpy %4.2f   AVX2/memcpy %.1fx   outputs %s\n",
                            frame_names[f], ns[0], ns[1], ns[0] / ns[1], ns[2], ns[0] / ns[2], ns[3], ns[2] / ns[3],
                            identical ? "identical" : "DIFFER");
                if (!identical) status = 1;
            }
        }
    }
    nq_color_processing_module_terminate();
    return status;
}
