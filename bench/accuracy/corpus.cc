#include "bench/accuracy/corpus.h"

#include <fmt/format.h>
#include <utility>

#include "input/fault_filters.h"

namespace bench::accuracy {
namespace {

using ZEL::EventKind;
using zel_monitor::faultFilter;
using Recipes = std::vector<Recipe>;
using Spans = std::vector<ZEL::TimeSpan>;

constexpr bool kEasy = false;
constexpr bool kHard = true;

// The fault, where there is one, lasts from second 4 to second 8 of 12.
const Spans kMiddle{{4.0, 8.0}};
const Spans kWhole{{0.0, 12.0}};
const Spans kNever;
const std::string kDuring = "enable='between(t,4,7.99)'";

// A pattern that moves fast enough to be no freeze, of medium brightness.
const std::string kScene = "testsrc2=s=640x360:r=25:d=12,scroll=h=0.01";
const std::string kSpeech =
    "flite=voice=slt:text='The quick brown fox jumps over the lazy dog. She sells sea shells by the sea "
    "shore. "
    "How much wood would a woodchuck chuck if a woodchuck could chuck wood. Peter Piper picked a peck of "
    "pickled "
    "peppers and then went home to eat them all with salt. A big black bear sat on a big black rug.',"
    "aresample=48000";

/// A case without its kind.
struct Row {
    const char* name;
    bool hard;
    const char* about;
    Spans truth;
    Recipes recipes;
};

void add(std::vector<Case>& cases, EventKind kind, std::vector<Row> rows) {
    for (Row& row : rows) {
        cases.push_back(
            {{row.name, row.about, std::move(row.recipes)}, kind, row.hard, std::move(row.truth)});
    }
}

/// ",filter:enable=..." of a fault that one filter makes.
std::string during(std::string_view filter) {
    return fmt::format(",{}:{}", filter, kDuring);
}

std::string faultDuring(std::string_view kind) {
    return during(faultFilter(kind).filters);
}

Recipes video(const std::string& graph, const std::string& quality = "16") {
    return {{"-f", "lavfi", "-i", graph, "-c:v", "libx264", "-preset", "veryfast", "-crf", quality,
             "-pix_fmt", "yuv420p"}};
}

/// Of a graph with more than one source.
Recipes complexVideo(const std::string& graph) {
    return {{"-filter_complex", graph, "-c:v", "libx264", "-preset", "veryfast", "-crf", "16", "-pix_fmt",
             "yuv420p"}};
}

/// The scene with its middle third coded as told.
Recipes coded(const std::string& scene, const Recipe& coder) {
    Recipe bad{"-f", "lavfi", "-i", scene, "-pix_fmt", "yuv420p", "-bf", "0"};
    bad.insert(bad.end(), coder.begin(), coder.end());
    const std::string splice = scene +
                               ",split[a][c];[a]trim=0:4[a1];[c]trim=8:12,setpts=PTS-STARTPTS[c1];"
                               "[0:v]setsar=1,trim=4:8,setpts=PTS-STARTPTS[b1];"
                               "[a1][b1][c1]concat=n=3:v=1:a=0,setpts=N/25/TB";
    return {bad,
            {"-i", std::string(kPrevious), "-filter_complex", splice, "-r", "25", "-c:v", "libx264",
             "-preset", "veryfast", "-crf", "10", "-pix_fmt", "yuv420p"}};
}

void addScreens(std::vector<Case>& cases) {
    const std::string black(faultFilter("black").filters);
    add(cases, EventKind::kBlack,
        {{"black-cut", kEasy, "cut to black and back", kMiddle, video(kScene + faultDuring("black"))},
         {"black-ends",
          kEasy,
          "black at the beginning and at the end",
          {{0.0, 2.0}, {10.0, 12.0}},
          video(kScene + "," + black + ":enable='lt(t,2)+gte(t,10)'")},
         {"black-none", kEasy, "no black at all", kNever, video(kScene)},
         {"black-noise", kHard, "noise over black", kMiddle,
          video(kScene + faultDuring("black") + during("noise=alls=20:allf=t"))},
         {"black-logo", kHard, "black with a small white logo in a corner", kMiddle,
          video(kScene + faultDuring("black") + during("drawbox=x=560:y=16:w=64:h=36:t=fill:c=white"))},
         {"black-big-logo", kHard, "black with a logo of 3% of the frame", kMiddle,
          video(kScene + faultDuring("black") + during("drawbox=x=500:y=16:w=120:h=60:t=fill:c=white"))},
         {"black-fade",
          kHard,
          "fades out for 1 s, black for 2 s, fades in for 1 s",
          {{5.0, 7.0}},
          video(kScene +
                ",fade=t=out:st=4:d=1:enable='between(t,4,6)',fade=t=in:st=7:d=1:enable='between(t,6,8)'")},
         {"black-dark-scene", kHard, "a very dark scene that is not black", kNever,
          video(kScene + during("lutyuv=y='16+(val-16)*0.2'"))},
         {"black-top-half", kHard, "only the upper half is black", kNever,
          video(kScene + "," + black + ":h=ih/2:" + kDuring)},
         {"black-bottom-half", kHard, "only the lower half is black", kNever,
          video(kScene + "," + black + ":y=ih/2:h=ih/2:" + kDuring)}});
    add(cases, EventKind::kGreen,
        {{"green-cut", kEasy, "frames of zeros between good ones", kMiddle,
          video(kScene + faultDuring("green"))},
         {"green-lossy", kHard, "the same, coded coarsely", kMiddle,
          video(kScene + faultDuring("green"), "38")},
         {"green-strip", kHard, "zeros but for a good strip at the top", kMiddle,
          video(kScene + ",split[a][b];[b]crop=iw:24:0:0[c];[a]null" + faultDuring("green") +
                "[d];[d][c]overlay")},
         {"green-studio", kHard, "a studio's green wall, which is not a fault", kNever,
          video(kScene + during("drawbox=t=fill:c=0x00b140"))}});
}

void addFreeze(std::vector<Case>& cases) {
    const std::string frozen =  // frame 100 stays for 4 s more
        "testsrc2=s=640x360:r=25:d=8,scroll=h=0.01,loop=loop=100:size=1:start=100,setpts=N/25/TB";
    const std::string still = "testsrc2=s=640x360:r=25:d=1,trim=end_frame=1,loop=loop=300:size=1";
    const auto with_clock = [&](const char* place) {
        return complexVideo(frozen + "[a];testsrc=s=96x72:r=25:d=12[b];[a][b]overlay=" + place +
                            ":shortest=1");
    };
    const Spans truth{{4.0, 8.04}};
    add(cases, EventKind::kFreeze,
        {{"freeze-cut", kEasy, "one frame stays for 4 s", truth, video(frozen)},
         {"freeze-none", kEasy, "everything moves", kNever, video(kScene)},
         {"freeze-coarse", kHard, "a freeze coded coarsely", truth, video(frozen, "36")},
         {"freeze-noise", kHard, "noise over a freeze", truth, video(frozen + ",noise=alls=8:allf=t")},
         {"freeze-clock", kHard, "a running clock over a freeze", truth, with_clock("x=16:y=16")},
         {"freeze-clock-inside", kHard, "the same in the middle of the frame", truth,
          with_clock("x=272:y=144")},
         {"freeze-slow-pan", kHard, "a slow pan, which is no freeze", kNever,
          video(still + ",scroll=h=0.0004")},
         {"freeze-small-motion", kHard, "a still scene in which something small moves", kNever,
          complexVideo(still + "[a];testsrc2=s=64x48:r=25:d=12[b];"
                               "[a][b]overlay=x='300+200*sin(t)':y='160+80*cos(t)':shortest=1")},
         {"freeze-high-rate", kHard, "calm motion at 60 frames per second", kNever,
          video("testsrc2=s=640x360:r=60:d=12")},
         {"freeze-dim-motion", kHard, "motion in a dark scene of little contrast", kNever,
          video(kScene + ",lutyuv=y='16+(val-16)*0.12'")}});
}

void addBlock(std::vector<Case>& cases) {
    // A soft texture that pans: there is detail for the quantiser to lose, and no edge of its own.
    const std::string scene =
        "color=gray:s=72x40:r=25:d=1,trim=end_frame=1,noise=c0_seed=7:c0s=100,scale=640:360:flags=bicubic,"
        "setsar=1,loop=loop=400:size=1,trim=duration=12,scroll=h=0.01";
    const auto mpeg2 = [&](const char* q) {
        return coded(scene, {"-c:v", "mpeg2video", "-q:v", q, "-g", "12"});
    };
    const auto h264 = [&](const char* qp, const char* loop_filter) {
        return coded(scene,
                     {"-c:v", "libx264", "-preset", "veryfast", "-qp", qp, "-x264-params", loop_filter});
    };
    const auto drawn = [&](const std::string& filters) {
        return coded(scene, {"-vf", filters, "-c:v", "libx264", "-qp", "10"});
    };
    add(cases, EventKind::kBlock,
        {{"block-none", kEasy, "coded well", kNever, mpeg2("3")},
         {"block-q31", kEasy, "MPEG-2 at the coarsest quantiser", kMiddle, mpeg2("31")},
         {"block-qp51", kEasy, "H.264 at the coarsest quantiser, no loop filter", kMiddle,
          h264("51", "no-deblock=1")},
         {"block-q20", kHard, "MPEG-2, quantiser 20", kMiddle, mpeg2("20")},
         {"block-q12", kHard, "MPEG-2, quantiser 12", kMiddle, mpeg2("12")},
         {"block-qp45", kHard, "H.264, quantiser 45, no loop filter", kMiddle, h264("45", "no-deblock=1")},
         {"block-qp51-filter", kHard, "H.264 at the coarsest quantiser, loop filter on", kMiddle,
          h264("51", "deblock=0,0")},
         {"block-damaged", kHard, "packets damaged on their way", kMiddle,
          coded(scene, {"-c:v", "mpeg2video", "-q:v", "6", "-g", "50", "-bsf:v", "noise=amount=3000"})},
         {"block-garbage", kEasy,
          "hard-edged squares of 8 pixels, as a decoder shows that has lost its references", kMiddle,
          drawn(std::string(faultFilter("block").filters))},
         {"block-mosaic", kHard, "a mosaic of 16-pixel squares", kMiddle,
          drawn("scale=40:24:flags=area,scale=640:360:flags=neighbor")},
         {"block-windows", kHard, "a facade of small windows, which is no fault", kNever,
          drawn("drawgrid=w=16:h=12:t=2:c=white")}});
}

void addExposure(std::vector<Case>& cases) {
    // The scene's mean luma is about 125; the fault's is told in the text.
    const auto luma = [](const char* value) {
        return video(kScene + during(fmt::format("lutyuv=y='{}'", value)));
    };
    add(cases, EventKind::kUnderexposed,
        {{"under-30", kEasy, "mean luma about 30", kMiddle, luma("16+(val-16)*0.13")},
         {"under-none", kEasy, "mean luma about 125", kNever, luma("val")},
         {"under-50", kHard, "mean luma about 50", kMiddle, luma("16+(val-16)*0.31")},
         {"under-80", kHard, "a dim scene, mean luma about 80, which is no fault", kNever,
          luma("16+(val-16)*0.59")}});
    add(cases, EventKind::kOverexposed,
        {{"over-225", kEasy, "mean luma about 225", kMiddle, luma("235-(235-val)*0.09")},
         {"over-none", kEasy, "mean luma about 125", kNever, luma("val")},
         {"over-210", kHard, "mean luma about 210", kMiddle, luma("235-(235-val)*0.23")},
         {"over-175", kHard, "a bright scene, mean luma about 175, which is no fault", kNever,
          luma("235-(235-val)*0.55")}});
}

Recipes sound(const std::string& graph) {
    return {{"-filter_complex", graph, "-ac", "1", "-c:a", "pcm_s16le"}};
}

Recipes speech(const std::string& filters) {
    return sound(kSpeech + ",atrim=0:12" + filters);
}

std::string volumeDuring(const std::string& volume) {
    return ",asetnsamples=480" + during("volume=" + volume);
}

Recipes speechAndNoise(const std::string& filters, const std::string& noise) {
    return sound(kSpeech + ",atrim=0:12" + filters + "[x];anoisesrc=seed=7:r=48000:d=12:" + noise +
                 "[y];[x][y]amix=normalize=0:duration=first");
}

/// 4 s of speech, 8 s of something else, 4 s of speech.
Recipes speechAround(const std::string& middle) {
    return sound(kSpeech + ",asplit[s1][s2];[s1]atrim=0:4[a];[s2]atrim=4:8,asetpts=PTS-STARTPTS[c];" +
                 middle + "[b];[a][b][c]concat=n=3:v=0:a=1");
}

void addSound(std::vector<Case>& cases) {
    add(cases, EventKind::kMute,
        {{"mute-gap", kEasy, "4 s of zeros in speech", kMiddle, speech(volumeDuring("0"))},
         {"mute-none", kEasy, "speech with its own pauses", kNever, speech("")},
         {"mute-dither", kHard, "a gap that is not zero, but dither of one step", kMiddle,
          speechAndNoise(volumeDuring("0"), "a=0.00004:c=white")},
         {"mute-hiss", kHard, "a quiet hiss at -50 dB in the gap, which is no silence", kNever,
          speechAndNoise(volumeDuring("0"), "a=0.006:c=white")},
         {"mute-short",
          kHard,
          "a gap of 1.5 s",
          {{4.0, 5.5}},
          speech(",asetnsamples=480,volume=0:enable='between(t,4,5.49)'")}});
    add(cases, EventKind::kLowVoice,
        {{"low-quiet", kEasy, "speech 35 dB too quiet", kWhole, speech(",volume=-35dB")},
         {"low-none", kEasy, "speech at its usual level", kNever, speech("")},
         {"low-part", kHard, "speech that is 35 dB too quiet for 4 s", kMiddle,
          speech(volumeDuring("-35dB"))}});
    add(cases, EventKind::kHighVoice,
        {{"high-loud", kEasy, "speech as loud as it gets below full scale", kWhole,
          speech(",volume=26dB,asoftclip=type=tanh,volume=0.95")},
         {"high-none", kEasy, "speech at its usual level", kNever, speech("")},
         {"high-part", kHard, "speech as loud as that for 4 s", kMiddle,
          speech(volumeDuring("26dB") + ",asoftclip=type=tanh,volume=0.95")}});
    const Spans gap{{4.0, 12.0}};
    add(cases, EventKind::kNoVoice,
        {{"novoice-noise", kEasy, "8 s of pink noise between speech", gap,
          speechAround("anoisesrc=seed=7:r=48000:d=8:a=0.1:c=pink")},
         {"novoice-none", kEasy, "speech throughout", kNever, speech("")},
         {"novoice-hum", kHard, "8 s of mains hum between speech", gap,
          speechAround("aevalsrc='0.2*sin(314*t)+0.1*sin(942*t)':s=48000:d=8")},
         {"novoice-over-noise", kHard, "speech over noise, 15 dB below it", kNever,
          speechAndNoise("", "a=0.03:c=pink")},
         {"novoice-beat", kHard, "8 s of drum beats between speech", gap,
          speechAround("aevalsrc='0.5*sin(1200*t)*exp(-30*mod(t,0.5))':s=48000:d=8")}});
}

/// Of a graph with two channels.
Recipes stereo(const std::string& graph, const Recipe& coder = {"-c:a", "pcm_s16le"}) {
    Recipe recipe{"-filter_complex", graph};
    recipe.insert(recipe.end(), coder.begin(), coder.end());
    return {recipe};
}

void addChannels(std::vector<Case>& cases) {
    // A voice in the middle of a room whose noise differs from left to right.
    const std::string room =
        kSpeech +
        ",atrim=0:12,pan=stereo|c0=c0|c1=c0[v];anoisesrc=seed=1:r=48000:d=12:a=0.03:c=pink[l];"
        "anoisesrc=seed=2:r=48000:d=12:a=0.03:c=pink[r];[l][r]join=inputs=2[n];"
        "[v][n]amix=normalize=0:duration=first";
    const auto panned = [&room](const std::string& channels) {
        return stereo(room + ",asplit[a][b];[b]pan=stereo|" + channels +
                      ",atrim=4:8,asetpts=PTS-STARTPTS[m];[a]asplit[a1][a2];[a1]atrim=0:4[s];"
                      "[a2]atrim=8:12,asetpts=PTS-STARTPTS[e];[s][m][e]concat=n=3:v=0:a=1");
    };
    const std::string driven = room + volumeDuring("24dB") + ",aformat=sample_fmts=s16";
    add(cases, EventKind::kClipping,
        {{"clipping-drive", kEasy, "driven 24 dB too high", kMiddle, stereo(driven)},
         {"clipping-far", kEasy, "one channel, driven 50 dB too high", kWhole, speech(",volume=50dB")},
         {"clipping-none", kEasy, "at its usual level", kNever, stereo(room)},
         {"clipping-aac", kHard, "driven 24 dB too high, then coded as AAC", kMiddle,
          stereo(driven, {"-c:a", "aac", "-b:a", "128k"})},
         {"clipping-limited", kHard, "as loud as a limiter makes it, which is no fault", kNever,
          stereo(room + ",alimiter=level_in=16:limit=0.98:level=false")}});
    add(cases, EventKind::kDeadChannel,
        {{"dead-right", kEasy, "the right channel is silent", kMiddle, panned("c0=c0|c1=0*c1")},
         {"dead-none", kEasy, "both channels sound", kNever, stereo(room)},
         {"dead-hum", kHard, "the right channel has nothing but the left one's crosstalk 46 dB below",
          kMiddle, panned("c0=c0|c1=0.005*c0")},
         {"dead-panned", kHard, "the right channel is 20 dB quieter, which is no fault", kNever,
          panned("c0=c0|c1=0.1*c1")}});
    add(cases, EventKind::kAntiphase,
        {{"antiphase-right", kEasy, "the right channel is the left one upside down", kMiddle,
          panned("c0=c0|c1=-1*c0")},
         {"antiphase-none", kEasy, "a voice in the middle", kNever, stereo(room)},
         {"antiphase-quieter", kHard, "the same, and 6 dB quieter", kMiddle, panned("c0=c0|c1=-0.5*c0")},
         {"antiphase-wide", kHard, "left and right have nothing in common, which is no fault", kNever,
          panned("c0=c0-0.98*c1|c1=c1-0.98*c0")}});
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    addScreens(cases);
    addFreeze(cases);
    addBlock(cases);
    addExposure(cases);
    addSound(cases);
    addChannels(cases);
    return cases;
}

}  // namespace

const std::vector<Case>& corpus() {
    static const std::vector<Case> cases = allCases();
    return cases;
}

}  // namespace bench::accuracy
