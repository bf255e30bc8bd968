#include "bench/accuracy/frame_verdicts.h"

#include <zel/algo/algo_facade.h>

#include <fmt/format.h>

#include "bench/accuracy/file_frames.h"
#include "bench/filter_chain.h"

namespace bench::accuracy {

std::string frameVerdicts(const std::string& name, const std::string& file) {
    ZELAlgo::AlgoFacade facade;
    support::FilterSource source = videoFrames(file);
    int frames = 0;
    int black = 0;
    int green = 0;
    int under = 0;
    int over = 0;
    int block = 0;
    int freeze = 0;
    for (; source.advance(); ++frames) {
        ZELAlgo::ZELVideoResult result{};
        facade.detectPlanes(planesOf(source.frame()), result);
        black += result.screen_type == 1 ? 1 : 0;
        green += result.screen_type == 2 ? 1 : 0;
        under += result.exposure_type == 1 ? 1 : 0;
        over += result.exposure_type == 2 ? 1 : 0;
        block += result.is_block ? 1 : 0;
        freeze += result.is_staticframe ? 1 : 0;
    }
    return fmt::format("| {} | {} | {} | {} | {} | {} | {} | {} |\n", name, frames, black, green, under, over,
                       block, freeze);
}

}  // namespace bench::accuracy
