#ifndef ZEL_TESTS_UNIT_EVENTS_SCENES_H_
#define ZEL_TESTS_UNIT_EVENTS_SCENES_H_

#include <zel/algo/algo_types.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

/// An I420 frame that a test draws.
struct DrawnFrame {
    DrawnFrame(uint32_t w, uint32_t h, uint8_t y = 128)
        : width(w), height(h), luma(size_t{w} * h, y), cb(size_t{w} * h / 4, 128), cr(cb) {}

    ZELAlgo::ZELVideoPlanes planes() const {
        return {.width = width,
                .height = height,
                .data = {luma.data(), cb.data(), cr.data()},
                .stride = {width, width / 2, width / 2}};
    }
    /// Fills part of the rows with one grey.
    void fillRows(uint32_t from, uint32_t to, uint8_t y) {
        std::fill(luma.begin() + from * width, luma.begin() + to * width, y);
    }

    uint32_t width;
    uint32_t height;
    std::vector<uint8_t> luma;
    std::vector<uint8_t> cb;
    std::vector<uint8_t> cr;
};

/// A landscape of light and shadow that has moved `pixels` to the left, its contrast scaled by `gain` from
/// black up. Landscapes of different seeds look different everywhere.
inline DrawnFrame landscape(double pixels = 0.0, double seed = 0.0, double gain = 1.0) {
    DrawnFrame frame(160, 128);
    for (uint32_t y = 0; y < frame.height; ++y) {
        for (uint32_t x = 0; x < frame.width; ++x) {
            const double at = x + pixels;
            const double light = 125.0 + 50.0 * std::sin(at * 0.11 + y * 0.05 + seed) +
                                 40.0 * std::sin(y * 0.17 - at * 0.043 + 2.0 * seed) +
                                 20.0 * std::sin(at * 0.31 + 3.0 * seed);
            frame.luma[y * frame.width + x] = static_cast<uint8_t>(16.0 + gain * (light - 16.0));
        }
    }
    return frame;
}

#endif  // ZEL_TESTS_UNIT_EVENTS_SCENES_H_
