// Where the samples of pixel i live in a buffer of each layout. The plane stride of the planar
// layout is always the whole call's pixel count, also when processing starts mid-buffer.
#pragma once

#include "transform_arguments.hpp"

#include <cstddef>

template <NQ_COLOR_FORMAT FORMAT, typename Sample, std::size_t CHANNELS>
class Buffer_layout;

template <typename Sample, std::size_t CHANNELS>
class Buffer_layout<NQ_COLOR_FORMAT_BGR_PLANAR, Sample, CHANNELS> {
public:
    Buffer_layout(Sample* base, std::size_t pixel_count) : m_base(base), m_plane(pixel_count) {}
    Sample& blue(std::size_t i) const { return m_base[i]; }
    Sample& green(std::size_t i) const { return m_base[m_plane + i]; }
    Sample& red(std::size_t i) const { return m_base[2 * m_plane + i]; }
    Sample& fourth(std::size_t i) const { return m_base[3 * m_plane + i]; }

private:
    Sample* m_base;
    std::size_t m_plane;
};

template <typename Sample, std::size_t CHANNELS>
class Buffer_layout<NQ_COLOR_FORMAT_BGR_PIXEL, Sample, CHANNELS> {
public:
    Buffer_layout(Sample* base, std::size_t) : m_base(base) {}
    Sample& blue(std::size_t i) const { return m_base[CHANNELS * i]; }
    Sample& green(std::size_t i) const { return m_base[CHANNELS * i + 1]; }
    Sample& red(std::size_t i) const { return m_base[CHANNELS * i + 2]; }
    Sample& fourth(std::size_t i) const { return m_base[CHANNELS * i + 3]; }

private:
    Sample* m_base;
};

template <typename Sample, std::size_t CHANNELS>
class Buffer_layout<NQ_COLOR_FORMAT_RGB_PIXEL, Sample, CHANNELS> {
public:
    Buffer_layout(Sample* base, std::size_t) : m_base(base) {}
    Sample& red(std::size_t i) const { return m_base[CHANNELS * i]; }
    Sample& green(std::size_t i) const { return m_base[CHANNELS * i + 1]; }
    Sample& blue(std::size_t i) const { return m_base[CHANNELS * i + 2]; }
    Sample& fourth(std::size_t i) const { return m_base[CHANNELS * i + 3]; }

private:
    Sample* m_base;
};
