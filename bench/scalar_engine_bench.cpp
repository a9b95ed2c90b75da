// Speed of the kernel family against a kernel that tests every option per pixel, on a
// 3840x2160 frame, with a memcpy of the input as the bandwidth bound. Prints the median of
// several runs in ns/pixel and the ratios; checks that both kernels wrote the same output.
//
//   scalar_engine_bench [runs]        (default 7)
#include "naive_kernel.hpp"

#include "scalar_engine/scalar_process.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

namespace {

constexpr int32_t width = 3840;
constexpr int32_t height = 2160;
constexpr int32_t pixel_count = width * height;

double median_ns_per_pixel(int runs, const std::function<void()>& work)
{
    std::vector<double> samples;
    for (int run = 0; run < runs; ++run) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        const auto end = std::chrono::steady_clock::now();
        samples.push_back(std::chrono::duration<double, std::nano>(end - begin).count() / pixel_count);
    }
    std::sort(samples.begin(), samples.end());
    return samples[samples.size() / 2];
}

struct Frame {
    std::vector<uint16_t> input = std::vector<uint16_t>(3 * static_cast<std::size_t>(pixel_count));
    std::vector<std::vector<LUT_entry>> tables = std::vector<std::vector<LUT_entry>>(6, std::vector<LUT_entry>(65536));
    float matrix[9] = {1.164f, 0.0f, 1.596f, 1.164f, -0.392f, -0.813f, 1.164f, 2.017f, 0.0f};

    Frame()
    {
        std::mt19937 random(42);
        for (auto& sample : input) sample = static_cast<uint16_t>(random());
        for (std::size_t k = 0; k < 65536; ++k) {
            for (int t = 0; t < 3; ++t) tables[t][k] = static_cast<LUT_entry>((k * 7 + t) & 0xFFFF);
            for (int t = 3; t < 6; ++t) tables[t][k] = static_cast<LUT_entry>(65535 - k);
        }
    }
};

template <typename T>
Transform_arguments<T> base_record(const Frame& frame)
{
    Transform_arguments<T> a{};
    a.input_buffer = frame.input.data();
    a.blue_input_LUT = frame.tables[0].data();
    a.green_input_LUT = frame.tables[1].data();
    a.red_input_LUT = frame.tables[2].data();
    a.blue_output_LUT = frame.tables[3].data();
    a.green_output_LUT = frame.tables[4].data();
    a.red_output_LUT = frame.tables[5].data();
    a.matrix = frame.matrix;
    a.blue_clamp_max = a.green_clamp_max = a.red_clamp_max = 65535;
    a.pixel_count = pixel_count;
    return a;
}

template <typename T>
void compare(const char* name, int runs, Transform_arguments<T> record, std::size_t output_samples,
             double memcpy_ns)
{
    std::vector<T> specialised(output_samples), straightforward(output_samples);
    record.output_buffer = specialised.data();
    const double fast = median_ns_per_pixel(runs, [&] { scalar_process(record, 0); });
    Transform_arguments<T> naive_record = record;
    naive_record.output_buffer = straightforward.data();
    const double slow = median_ns_per_pixel(runs, [&] { naive::process(naive_record, 0); });
    const bool identical = specialised == straightforward;
    std::printf("%s\n  specialised %6.2f ns/pixel   naive %6.2f ns/pixel   ratio %.2fx   "
                "memcpy bound %.2fx below specialised   outputs %s\n",
                name, fast, slow, slow / fast, fast / memcpy_ns, identical ? "identical" : "DIFFER");
    if (!identical) std::exit(1);
}

}  // namespace

int main(int argc, char** argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    Frame frame;
    std::vector<uint16_t> copy(frame.input.size());
    const double memcpy_ns = median_ns_per_pixel(runs, [&] {
        std::memcpy(copy.data(), frame.input.data(), copy.size() * sizeof(uint16_t));
    });
    std::printf("%d x %d pixels, median of %d runs; memcpy of the input: %.2f ns/pixel\n", width,
                height, runs, memcpy_ns);

    auto a = base_record<unsigned short>(frame);
    a.input_buffer_format = a.output_buffer_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    a.blue_input_LUT_enabled = a.green_input_LUT_enabled = a.red_input_LUT_enabled = true;
    a.blue_output_LUT_enabled = a.green_output_LUT_enabled = a.red_output_LUT_enabled = true;
    a.fourth_channel_enabled = true;
    compare("(a) BGR pixels in, six tables, no shift, fourth channel, BGR pixels out, 16-bit", runs,
            a, 4 * static_cast<std::size_t>(pixel_count), memcpy_ns);

    auto b = base_record<unsigned char>(frame);
    b.input_buffer_format = b.output_buffer_format = NQ_COLOR_FORMAT_BGR_PLANAR;
    b.blue_shift_distance = b.green_shift_distance = b.red_shift_distance = -8;
    compare("(b) planar in, no tables, right shift 8, 8-bit planar out", runs, b,
            3 * static_cast<std::size_t>(pixel_count), memcpy_ns);
    return 0;
}
