#include <zel/algo/algo_facade.h>
#include <zel/base/log.h>

#include <cstdio>
#include <string>

#include "support/rendered_pictures.h"

// usage: picture_accuracy CLIP...
// Prints the picture table of docs/accuracy.md: how many of the pictures of each clip got each verdict.

int main(int argc, char** argv) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    std::printf("| clip | pictures | black | green | under | over | block | frozen |\n");
    std::printf("|---|--:|--:|--:|--:|--:|--:|--:|\n");
    for (int i = 1; i < argc; ++i) {
        ZELAlgo::AlgoFacade facade;
        const auto pictures = support::renderPictures(std::string("movie=") + argv[i], 1000);
        int black = 0;
        int green = 0;
        int under = 0;
        int over = 0;
        int block = 0;
        int frozen = 0;
        for (const support::RenderedPicture& picture : pictures) {
            ZELAlgo::ZELVideoResult result{};
            facade.detectVideo({picture.width, picture.height, 0, picture.bytes.data()}, result);
            black += result.screen_type == ZELAlgo::kScreenBlack ? 1 : 0;
            green += result.screen_type == ZELAlgo::kScreenGreen ? 1 : 0;
            under += result.exposure_type == ZELAlgo::kExposureUnder ? 1 : 0;
            over += result.exposure_type == ZELAlgo::kExposureOver ? 1 : 0;
            block += result.is_block ? 1 : 0;
            frozen += result.is_staticframe ? 1 : 0;
        }
        std::string name = argv[i];
        name = name.substr(name.find_last_of('/') + 1);
        name = name.substr(0, name.find_last_of('.'));
        std::printf("| %s | %zu | %d | %d | %d | %d | %d | %d |\n", name.c_str(), pictures.size(), black,
                    green, under, over, block, frozen);
    }
}
