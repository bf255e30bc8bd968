#include <fmt/format.h>
#include <utility>

#include "bench/accuracy/corpus.h"
#include "input/fault_filters.h"

namespace bench::accuracy {
namespace {

const Recipe kCodedWell{"-c:v", "libx264", "-preset", "veryfast", "-crf", "18"};

}  // namespace

std::vector<Clip> textureClips() {
    std::vector<Clip> clips;
    const auto add = [&clips](const std::string& name, const std::string& about, const std::string& filters,
                              const Recipe& coder = kCodedWell) {
        Recipe recipe{"-i", std::string(kTexture), "-filter_complex", filters, "-t", "2"};
        recipe.insert(recipe.end(), coder.begin(), coder.end());
        clips.push_back({"texture-" + name, about, {std::move(recipe)}, "mp4"});
    };
    add("clean", "nothing wrong", "null");
    for (const char* const q : {"2", "5", "10", "20", "31"}) {
        add(fmt::format("mpeg4-q{}", q), fmt::format("MPEG-4, quantiser {}", q), "null",
            {"-c:v", "mpeg4", "-q:v", q});
    }
    const Recipe coarsest{"-c:v", "libx264", "-qp", "51"};
    add("h264-qp51", "H.264 at the coarsest quantiser", "null", coarsest);
    Recipe unfiltered = coarsest;
    unfiltered.insert(unfiltered.end(), {"-x264-params", "no-deblock=1"});
    add("h264-qp51-no-loop-filter", "the same without the loop filter", "null", unfiltered);
    for (const int cell : {8, 16, 32}) {
        add(fmt::format("mosaic-{}", cell), fmt::format("a mosaic of {}-pixel squares", cell),
            fmt::format("scale=iw/{0}:ih/{0}:flags=area,scale=1280:720:flags=neighbor", cell));
    }
    for (const int cell : {4, 5, 6, 8, 16}) {
        add(fmt::format("random-cells-{}", cell),
            fmt::format("{}-pixel squares of random grey, as of a decoder that has lost its place", cell),
            fmt::format("nullsrc=s={}x{}:r=25,format=gray,geq=lum='random(1)*255',"
                        "scale=1280:720:flags=neighbor,format=yuv420p",
                        1280 / cell, 720 / cell));
    }
    for (const int stops : {-3, -2, -1, 1, 2, 3}) {
        add(fmt::format("exposure{:+}", stops), fmt::format("{:+} stops of exposure", stops),
            fmt::format("format=gbrpf32le,exposure=exposure={},format=yuv420p", stops));
    }
    const std::string frozen = fmt::format("{},setpts=N/25/TB", zel_monitor::faultFilter("freeze").filters);
    add("frozen", "the first frame stays", frozen);
    for (const int noise : {5, 20}) {
        add(fmt::format("frozen-noise-{}", noise), fmt::format("the same under noise of strength {}", noise),
            fmt::format("{},noise=alls={}:allf=t", frozen, noise));
    }
    const auto clock = [&frozen](const char* place) {
        return fmt::format("{}[f];testsrc=s=160x120:r=25[c];[f][c]overlay={}", frozen, place);
    };
    add("frozen-corner-clock", "the same with a clock in a corner", clock("20:20"));
    add("frozen-centre-clock", "the same with a clock in the middle", clock("560:300"));
    return clips;
}

}  // namespace bench::accuracy
