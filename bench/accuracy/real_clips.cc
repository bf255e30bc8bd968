#include "bench/accuracy/real_clips.h"

#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "input/fault_filters.h"

namespace bench::accuracy {
namespace {

using zel_monitor::faultFilter;
using Type = Material::Type;
using Kinds = std::vector<std::string_view>;
using Spans = std::vector<ZEL::TimeSpan>;

constexpr double kLengthS = 9.0;
constexpr double kStartS = 3.0;
constexpr double kEndS = 6.0;

/// Over which part of the clip the filters and the coder go, and whether that is a fault.
enum class Extent { kMiddle, kWhole, kNoFault };

struct Variant {
    std::string name;
    std::string about;
    Kinds kinds;
    Extent extent = Extent::kMiddle;
    std::string filters = "null";
    Recipe coder = {};  ///< empty: one that keeps what is there
    std::string type = "mkv";
    int bytes_per_error = 0;  ///< of the middle third's packets; 0: no bit errors
    bool loses_packets = false;
    bool comes_and_goes = false;
    size_t parts = 1;  ///< of the material that are made so, one case each
};

const Recipe kGoodVideo{"-c:v", "libx264", "-preset", "veryfast", "-crf", "20"};
const Recipe kGoodSound{"-c:a", "pcm_s16le"};

Variant faulty(const char* name, const char* about, Kinds kinds, std::string filters) {
    return {name, about, std::move(kinds), Extent::kMiddle, std::move(filters)};
}

Variant coded(Variant variant, Recipe coder) {
    variant.coder = std::move(coder);
    return variant;
}

Variant whole(Variant variant) {
    variant.extent = Extent::kWhole;
    return variant;
}

/// Of a fault that stands alone, so that there are enough cases of it.
Variant twice(Variant variant) {
    variant.parts = 2;
    return variant;
}

/// What might be taken for an event of the kind.
Variant harmless(const char* name, const char* about, std::string_view kind, std::string filters) {
    return {name, about, {kind}, Extent::kNoFault, std::move(filters)};
}

Variant damaged(const char* name, const char* about, Recipe coder, int bytes_per_error) {
    Variant variant{name, about, {"damage", "block", "green", "stall"}};
    variant.filters = "";
    variant.coder = std::move(coder);
    variant.type = "ts";
    variant.bytes_per_error = bytes_per_error;
    variant.loses_packets = bytes_per_error == 0;
    variant.comes_and_goes = true;
    return variant;
}

std::vector<Variant> videoVariants() {
    const std::string black(faultFilter("black").filters);
    const std::string frozen = std::string(faultFilter("freeze").filters) + ",setpts=N/FR/TB";
    const std::string still = "trim=end_frame=1," + frozen;
    const std::string box = ",drawbox=x=iw*0.85:y=ih*0.05:w=iw/10:h=ih/12:t=fill:c=white";
    const std::string mosaic = "scale=iw/16:ih/16:flags=area,scale=16*iw:16*ih:flags=neighbor";
    const std::string mover = "[s];testsrc2=s=32x24:r=25[m];[s][m]overlay=x=W*(0.1+0.08*t):y=H*0.6";
    const std::string clock =
        "[s];testsrc=s=160x120:r=25[m];[m][s]scale2ref=w=iw/8:h=ih/10[m2][s2];[s2][m2]overlay=x=W*0.8:y=H/20";
    const std::string ticker =
        "[s];testsrc2=s=1280x72:r=25,trim=end_frame=1,loop=-1:1,setpts=N/25/TB,scroll=h=0.004[m];"
        "[m][s]scale2ref=w=iw:h=ih/12[m2][s2];[s2][m2]overlay=y=H*0.88";
    const Recipe h264{"-c:v", "libx264", "-preset", "veryfast"};
    const auto with = [](Recipe words, const Recipe& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    const Recipe mpeg2{"-c:v", "mpeg2video", "-g", "12", "-bf", "2"};
    const Recipe sent_mpeg2 = with(mpeg2, {"-q:v", "5"});
    const Recipe sent_mpeg4{"-c:v", "mpeg4", "-q:v", "5", "-g", "12"};
    const Recipe sent_h264 = with(h264, {"-crf", "23", "-g", "12", "-threads", "1"});
    return {
        faulty("freeze", "one frame stays for 3 s", {"freeze"}, frozen),
        coded(faulty("freeze-low", "the same, coded coarsely", {"freeze"}, frozen),
              with(h264, {"-crf", "34"})),
        faulty("freeze-noise", "noise over a freeze", {"freeze"}, frozen + ",noise=alls=8:allf=t"),
        faulty("freeze-clock", "a running clock in a corner of a freeze", {"freeze"}, frozen + clock),
        faulty("freeze-ticker", "a ticker that runs below a freeze", {"freeze"}, frozen + ticker),
        faulty("freeze-blink", "a blinking mark over a freeze", {"freeze"},
               frozen + box + ":enable='lt(mod(t,1),0.5)'"),
        twice(faulty("black", "black", {"black"}, black)),
        twice(faulty("black-logo", "black with a white logo in a corner", {"black"}, black + box)),
        faulty("black-noise", "black under noise", {"black"}, black + ",noise=alls=20:allf=t"),
        twice(faulty("green", "frames of zeros", {"green"}, std::string(faultFilter("green").filters))),
        twice(faulty("half-grey", "the lower half is grey", {"block", "damage"},
                     "drawbox=y=ih/2:h=ih/2:t=fill:c=gray")),
        twice(faulty("mosaic-16", "a mosaic of 16-pixel squares", {"block"}, mosaic)),
        twice(whole(coded(faulty("mpeg2-q31", "MPEG-2 at quantiser 31", {"block"}, "null"),
                          with(mpeg2, {"-q:v", "31"})))),
        whole(coded(faulty("h264-qp51", "H.264 at quantiser 51", {"block"}, "null"),
                    with(h264, {"-g", "50", "-qp", "51"}))),
        damaged("errors-mpeg2", "MPEG-2 with bit errors", sent_mpeg2, 4000),
        damaged("errors-mpeg4", "MPEG-4 with bit errors", sent_mpeg4, 2500),
        damaged("errors-h264", "H.264 with bit errors", sent_h264, 1500),
        damaged("loss-mpeg2", "MPEG-2 with 2 % of its packets lost", sent_mpeg2, 0),
        damaged("loss-h264", "H.264 with 2 % of its packets lost", sent_h264, 0),
        faulty("under", "luma lowered to an eighth", {"underexposed"}, "lutyuv=y=16+(val-16)*0.13"),
        faulty("over", "luma raised to its last eleventh", {"overexposed"}, "lutyuv=y=235-(235-val)*0.09"),
        harmless("pan", "a slow pan over a still, no freeze", "freeze", still + ",scroll=h=0.0004"),
        harmless("mover", "something small crosses a still, no freeze", "freeze", still + mover),
        harmless("dim", "luma lowered to a fifth, no black", "black", "lutyuv=y=16+(val-16)*0.2"),
        coded(harmless("mpeg2-q5", "MPEG-2 at quantiser 5, as sent, no blocks", "block", "null"), sent_mpeg2),
        harmless("top-black", "only the upper half is black, no black frame", "black", black + ":h=ih/2"),
    };
}

std::vector<Variant> soundVariants(Type type) {
    const Kinds clipping{"clipping"};
    const std::string driven = "volume=20dB,aformat=sample_fmts=s16";
    std::vector<Variant> variants{
        faulty("mute", "zeros", {"mute"}, std::string(faultFilter("mute").filters)),
        faulty("clipped", "driven 20 dB into clipping", clipping, driven),
        coded(faulty("clipped-aac", "the same, then coded as AAC", clipping, driven),
              {"-c:a", "aac", "-b:a", "128k"}),
        faulty("dead-channel", "the right channel is silent", {"dead-channel"}, "pan=stereo|c0=c0|c1=0*c0"),
        faulty("antiphase", "the right channel is the left one upside down", {"antiphase"},
               "pan=stereo|c0=c0|c1=-1*c0"),
    };
    if (type == Type::kSpeech) {
        variants.push_back(whole(faulty("quiet", "speech 35 dB too quiet", {"low-voice"}, "volume=-35dB")));
    }
    return variants;
}

/// The part of the material that is made faulty, with the filters over what they are for.
std::string graphOf(const Variant& variant, bool sound) {
    const std::string trim = sound ? "atrim" : "trim";
    const std::string reset = sound ? "asetpts=PTS-STARTPTS" : "setpts=PTS-STARTPTS";
    const std::string base =
        sound ? "[0:a]aresample=48000,aformat=sample_fmts=flt:channel_layouts=stereo,asetnsamples=480"
              : "[0:v]crop=floor(iw/16)*16:floor(ih/16)*16,setsar=1,format=yuv420p";
    std::string head = fmt::format("{},{}=0:{},{}", base, trim, kLengthS, reset);
    if (variant.filters.empty()) {
        return head;
    }
    const std::string faulty = sound ? variant.filters + ",aformat=sample_fmts=flt:channel_layouts=stereo"
                                     : variant.filters + ",format=yuv420p,setsar=1";
    if (variant.extent != Extent::kMiddle) {
        return fmt::format("{},{},{}=duration={}", head, faulty, trim, kLengthS);
    }
    return fmt::format(
        "{0},{6}split=3[a0][b0][c0];[a0]{1}=0:{3}[a];[b0]{1}={3}:{4},{2},{5},{1}=duration={7}[b];"
        "[c0]{1}={4}:{8},{2}[c];[a][b][c]concat=n=3:{9}",
        head, trim, reset, kStartS, kEndS, faulty, sound ? "a" : "", kEndS - kStartS, kLengthS,
        sound ? "v=0:a=1" : "v=1:a=0");
}

SpansByKind shifted(SpansByKind holds, double by_s) {
    for (auto& [kind, spans] : holds) {
        for (ZEL::TimeSpan& span : spans) {
            span = {span.start_s - by_s, span.end_s - by_s};
        }
    }
    return holds;
}

RealCase caseOf(const Material& material, size_t part, const Variant& variant) {
    const bool sound = material.type != Type::kVideo;
    Recipe recipe;
    if (!sound) {
        recipe = {"-stream_loop", "-1"};  // some clips are shorter
    }
    recipe.insert(recipe.end(),
                  {"-ss", fmt::format("{}", material.from_s[part]), "-i", material.file, "-filter_complex",
                   graphOf(variant, sound), "-t", fmt::format("{}", kLengthS)});
    const Recipe& good = sound ? kGoodSound : kGoodVideo;
    const Recipe& coder = variant.coder.empty() ? good : variant.coder;
    recipe.insert(recipe.end(), coder.begin(), coder.end());
    RealCase made{&material,
                  variant.name,
                  variant.about,
                  part,
                  {},
                  variant.kinds,
                  {},
                  variant.comes_and_goes,
                  sound,
                  shifted(material.holds, material.from_s[part])};
    made.clip = Clip{made.name(), variant.about, {std::move(recipe)}, variant.type};
    if (variant.bytes_per_error > 0) {
        made.clip->recipes.push_back({"-i", std::string(kPrevious), "-c", "copy", "-bsf:v",
                                      fmt::format("noise=amount='if(between(pts*tb,{},{}),{},0)'", kStartS,
                                                  kEndS, variant.bytes_per_error)});
    }
    if (variant.loses_packets) {
        made.clip->packets_lost = ZEL::TimeSpan{kStartS, kEndS};
    }
    if (variant.comes_and_goes) {
        made.truth = {{kStartS - 0.5, kEndS + 1.0}};  // errors stay until a whole frame comes
    } else if (variant.extent == Extent::kMiddle) {
        made.truth = {{kStartS, kEndS}};
    } else if (variant.extent == Extent::kWhole) {
        made.truth = {{0.0, kLengthS}};
    }
    return made;
}

/// The whole material once more through an encoder.
Clip recoded(const Material& material) {
    Recipe recipe{"-i", material.file};
    if (material.type == Type::kVideo) {
        recipe.insert(recipe.end(), {"-an", "-pix_fmt", "yuv420p", "-vf", "crop=floor(iw/2)*2:floor(ih/2)*2",
                                     "-c:v", "libx264", "-preset", "veryfast", "-crf", "30"});
    } else {
        recipe.insert(recipe.end(), {"-c:a", "aac", "-b:a", "96k"});
    }
    return {material.name + ".recoded", "coded once more", {std::move(recipe)}};
}

Material materialOf(const nlohmann::json& entry, const std::string& folder) {
    const std::string file = entry.at("file");
    const std::string type = entry.at("type");
    Material material;
    material.file = folder + "/" + file;
    material.name = file.substr(file.find('/') + 1);
    material.name.resize(material.name.find('.'));
    material.type = type == "video" ? Type::kVideo : type == "speech" ? Type::kSpeech : Type::kMusic;
    material.from_s = entry.at("from").get<std::vector<double>>();
    for (const auto& [kind, spans] : entry.at("holds").items()) {
        for (const auto& span : spans) {
            material.holds[kind].push_back({span.at(0), span.at(1)});
        }
    }
    return material;
}

}  // namespace

std::vector<Material> readMaterial(const std::string& folder, Half half) {
    const std::string list = folder + "/clips.json";
    std::ifstream stream(list);
    if (!stream) {
        throw std::runtime_error(list + " is not there: bench/real_clips fetches the clips");
    }
    std::vector<Material> material;
    try {
        for (const auto& entry : nlohmann::json::parse(stream)) {
            const bool kept = entry.at("half") == "kept";
            if (half == Half::kAll || kept == (half == Half::kKept)) {
                material.push_back(materialOf(entry, folder));
            }
        }
    } catch (const nlohmann::json::exception& error) {
        throw std::runtime_error(list + ": " + error.what());
    }
    return material;
}

Spans RealCase::held(const Kinds& of) const {
    Spans spans;
    for (const std::string_view kind : of) {
        if (const auto found = holds.find(kind); found != holds.end()) {
            spans.insert(spans.end(), found->second.begin(), found->second.end());
        }
    }
    return spans;
}

std::vector<RealCase> realCases(const std::vector<Material>& material) {
    std::vector<RealCase> cases;
    for (const Material& one : material) {
        const bool sound = one.type != Type::kVideo;
        cases.push_back({&one, "as-it-is", "as it is", 0, {}, {}, {}, false, sound, one.holds});
        cases.push_back(
            {&one, "recoded", "coded once more", 0, recoded(one), {}, {}, false, sound, one.holds});
        for (const Variant& variant : sound ? soundVariants(one.type) : videoVariants()) {
            const size_t parts = std::min(sound ? one.from_s.size() : variant.parts, one.from_s.size());
            for (size_t part = 0; part < parts; ++part) {
                cases.push_back(caseOf(one, part, variant));
            }
        }
    }
    return cases;
}

}  // namespace bench::accuracy
