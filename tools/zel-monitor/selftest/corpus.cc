#include "selftest/corpus.h"

#include <fmt/format.h>

namespace zel_monitor::selftest {
namespace {

using ZEL::EventKind;
using ZEL::TimeSpan;

// The fault, where there is one, lasts from second 4 to second 8 of 12.
const std::vector<ZEL::TimeSpan> kMiddle{{4.0, 8.0}};
const std::vector<ZEL::TimeSpan> kNever;
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

Recipe video(const std::string& graph, const std::string& quality = "16") {
    return {"-f",      "lavfi",    "-i",   graph,   "-c:v",     "libx264",
            "-preset", "veryfast", "-crf", quality, "-pix_fmt", "yuv420p"};
}

Recipe complexVideo(const std::string& graph) {
    return {"-filter_complex", graph,  "-c:v", "libx264",  "-preset",
            "veryfast",        "-crf", "16",   "-pix_fmt", "yuv420p"};
}

Recipe sound(const std::string& graph) {
    return {"-filter_complex", graph, "-ac", "1", "-c:a", "pcm_s16le"};
}

/// The scene with its middle third replaced by what the recipe before has made of it.
Recipe spliced(const std::string& scene) {
    return {
        "-i",
        std::string(kPrevious),
        "-filter_complex",
        fmt::format(
            "{0},split[a][c];[a]trim=0:4[a1];[c]trim=8:12,setpts=PTS-STARTPTS[c1];"
            "[0:v]setsar=1,trim=4:8,setpts=PTS-STARTPTS[b1];[a1][b1][c1]concat=n=3:v=1:a=0,setpts=N/25/TB",
            scene),
        "-r",
        "25",
        "-c:v",
        "libx264",
        "-preset",
        "veryfast",
        "-crf",
        "10",
        "-pix_fmt",
        "yuv420p"};
}

void addBlack(std::vector<Case>& cases) {
    const auto add = [&](const char* name, bool hard, const char* about, std::vector<ZEL::TimeSpan> truth,
                         Recipe recipe) {
        cases.push_back({name, ZEL::EventKind::kBlack, hard, about, std::move(truth), {std::move(recipe)}});
    };
    const std::string fill = kScene + ",drawbox=t=fill:c=black:";
    add("black-cut", false, "cut to black and back", kMiddle, video(fill + kDuring));
    add("black-ends", false, "black at the beginning and at the end", {{0.0, 2.0}, {10.0, 12.0}},
        video(fill + "enable='lt(t,2)+gte(t,10)'"));
    add("black-none", false, "no black at all", kNever, video(kScene));
    add("black-noise", true, "noise over black", kMiddle,
        video(fill + kDuring + ",noise=alls=20:allf=t:" + kDuring));
    add("black-logo", true, "black with a small white logo in a corner", kMiddle,
        video(fill + kDuring + ",drawbox=x=560:y=16:w=64:h=36:t=fill:c=white:" + kDuring));
    add("black-big-logo", true, "black with a logo of 3% of the picture", kMiddle,
        video(fill + kDuring + ",drawbox=x=500:y=16:w=120:h=60:t=fill:c=white:" + kDuring));
    add("black-fade", true, "fades out for 1 s, black for 2 s, fades in for 1 s", {{5.0, 7.0}},
        video(kScene +
              ",fade=t=out:st=4:d=1:enable='between(t,4,6)',fade=t=in:st=7:d=1:enable='between(t,6,8)'"));
    add("black-dark-scene", true, "a very dark scene that is not black", kNever,
        video(kScene + ",lutyuv=y='16+(val-16)*0.2':" + kDuring));
    add("black-top-half", true, "only the upper half is black", kNever,
        video(kScene + ",drawbox=h=180:t=fill:c=black:" + kDuring));
    add("black-bottom-half", true, "only the lower half is black", kNever,
        video(kScene + ",drawbox=y=180:h=180:t=fill:c=black:" + kDuring));
}

void addGreen(std::vector<Case>& cases) {
    const auto add = [&](const char* name, bool hard, const char* about, std::vector<ZEL::TimeSpan> truth,
                         Recipe recipe) {
        cases.push_back({name, ZEL::EventKind::kGreen, hard, about, std::move(truth), {std::move(recipe)}});
    };
    const std::string zero = kScene + ",lutyuv=y=0:u=0:v=0:" + kDuring;
    add("green-cut", false, "pictures of zeros between good ones", kMiddle, video(zero));
    add("green-lossy", true, "the same, coded coarsely", kMiddle, video(zero, "38"));
    add("green-strip", true, "zeros but for a good strip at the top", kMiddle,
        video(kScene + ",split[a][b];[b]crop=iw:24:0:0[c];[a]lutyuv=y=0:u=0:v=0:" + kDuring +
              "[d];[d][c]overlay"));
    add("green-studio", true, "a studio's green wall, which is not a fault", kNever,
        video(kScene + ",drawbox=t=fill:c=0x00b140:" + kDuring));
}

void addFreeze(std::vector<Case>& cases) {
    const auto add = [&](const char* name, bool hard, const char* about, std::vector<ZEL::TimeSpan> truth,
                         Recipe recipe) {
        cases.push_back({name, ZEL::EventKind::kFreeze, hard, about, std::move(truth), {std::move(recipe)}});
    };
    const std::string moving = "testsrc2=s=640x360:r=25:d=8,scroll=h=0.01";
    const std::string frozen =
        moving + ",loop=loop=100:size=1:start=100,setpts=N/25/TB";  // picture 100 stays for 4 s more
    const std::vector<ZEL::TimeSpan> truth{{4.0, 8.04}};
    add("freeze-cut", false, "one picture stays for 4 s", truth, video(frozen));
    add("freeze-none", false, "everything moves", kNever, video(kScene));
    add("freeze-coarse", true, "a freeze coded coarsely", truth, video(frozen, "36"));
    add("freeze-noise", true, "noise over a freeze", truth, video(frozen + ",noise=alls=8:allf=t"));
    add("freeze-clock", true, "a running clock over a freeze", truth,
        complexVideo(frozen + "[a];testsrc=s=96x72:r=25:d=12[b];[a][b]overlay=x=16:y=16:shortest=1"));
    add("freeze-clock-inside", true, "the same in the middle of the picture", truth,
        complexVideo(frozen + "[a];testsrc=s=96x72:r=25:d=12[b];[a][b]overlay=x=272:y=144:shortest=1"));
    add("freeze-slow-pan", true, "a slow pan, which is no freeze", kNever,
        video("testsrc2=s=640x360:r=25:d=1,trim=end_frame=1,loop=loop=300:size=1,scroll=h=0.0004"));
    add("freeze-small-motion", true, "a still scene in which something small moves", kNever,
        complexVideo(
            "testsrc2=s=640x360:r=25:d=1,trim=end_frame=1,loop=loop=300:size=1[a];"
            "testsrc2=s=64x48:r=25:d=12[b];[a][b]overlay=x='300+200*sin(t)':y='160+80*cos(t)':shortest=1"));
    add("freeze-high-rate", true, "calm motion at 60 pictures per second", kNever,
        video("testsrc2=s=640x360:r=60:d=12"));
    add("freeze-dim-motion", true, "motion in a dark scene of little contrast", kNever,
        video(kScene + ",lutyuv=y='16+(val-16)*0.12'"));
}

void addBlock(std::vector<Case>& cases) {
    // A soft texture that pans: there is detail for the quantiser to lose, and no edge of its own.
    const std::string scene =
        "color=gray:s=72x40:r=25:d=1,trim=end_frame=1,noise=c0_seed=7:c0s=100,scale=640:360:flags=bicubic,"
        "setsar=1,"
        "loop=loop=400:size=1,trim=duration=12,scroll=h=0.01";
    const auto add = [&](const char* name, bool hard, const char* about, std::vector<ZEL::TimeSpan> truth,
                         std::vector<std::string> coder) {
        Recipe bad{"-f", "lavfi", "-i", scene, "-pix_fmt", "yuv420p", "-bf", "0"};
        bad.insert(bad.end(), coder.begin(), coder.end());
        cases.push_back(
            {name, ZEL::EventKind::kBlock, hard, about, std::move(truth), {std::move(bad), spliced(scene)}});
    };
    const auto mpeg2 = [](const char* q) {
        return std::vector<std::string>{"-c:v", "mpeg2video", "-q:v", q, "-g", "12"};
    };
    const auto h264 = [](const char* qp, bool filter) {
        std::vector<std::string> words{"-c:v", "libx264", "-preset", "veryfast", "-qp", qp};
        words.insert(words.end(), {"-x264-params", filter ? "deblock=0,0" : "no-deblock=1"});
        return words;
    };
    add("block-none", false, "coded well", kNever, mpeg2("3"));
    add("block-q31", false, "MPEG-2 at the coarsest quantiser", kMiddle, mpeg2("31"));
    add("block-qp51", false, "H.264 at the coarsest quantiser, no loop filter", kMiddle, h264("51", false));
    add("block-q20", true, "MPEG-2, quantiser 20", kMiddle, mpeg2("20"));
    add("block-q12", true, "MPEG-2, quantiser 12", kMiddle, mpeg2("12"));
    add("block-qp45", true, "H.264, quantiser 45, no loop filter", kMiddle, h264("45", false));
    add("block-qp51-filter", true, "H.264 at the coarsest quantiser, loop filter on", kMiddle,
        h264("51", true));
    add("block-damaged", true, "packets damaged on their way", kMiddle,
        {"-c:v", "mpeg2video", "-q:v", "6", "-g", "50", "-bsf:v", "noise=amount=3000"});
    add("block-garbage", false,
        "hard-edged squares of 8 pixels, as a decoder shows that has lost its references", kMiddle,
        {"-vf", "scale=80:45:flags=area,noise=alls=80:allf=t,scale=640:360:flags=neighbor", "-c:v", "libx264",
         "-qp", "10"});
    add("block-mosaic", true, "a mosaic of 16-pixel squares", kMiddle,
        {"-vf", "scale=40:24:flags=area,scale=640:360:flags=neighbor", "-c:v", "libx264", "-qp", "10"});
    add("block-windows", true, "a facade of small windows, which is no fault", kNever,
        {"-vf", "drawgrid=w=16:h=12:t=2:c=white", "-c:v", "libx264", "-qp", "10"});
}

void addExposure(std::vector<Case>& cases) {
    const auto add = [&](const char* name, ZEL::EventKind kind, bool hard, const char* about, bool fault,
                         const std::string& luma) {
        cases.push_back({name,
                         kind,
                         hard,
                         about,
                         fault ? kMiddle : kNever,
                         {video(kScene + ",lutyuv=y='" + luma + "':" + kDuring)}});
    };
    // The scene's mean luma is about 125; the fault's is told in the text.
    add("under-30", ZEL::EventKind::kUnderexposed, false, "mean luma about 30", true, "16+(val-16)*0.13");
    add("under-none", ZEL::EventKind::kUnderexposed, false, "mean luma about 125", false, "val");
    add("under-50", ZEL::EventKind::kUnderexposed, true, "mean luma about 50", true, "16+(val-16)*0.31");
    add("under-80", ZEL::EventKind::kUnderexposed, true, "a dim scene, mean luma about 80, which is no fault",
        false, "16+(val-16)*0.59");
    add("over-225", ZEL::EventKind::kOverexposed, false, "mean luma about 225", true, "235-(235-val)*0.09");
    add("over-none", ZEL::EventKind::kOverexposed, false, "mean luma about 125", false, "val");
    add("over-210", ZEL::EventKind::kOverexposed, true, "mean luma about 210", true, "235-(235-val)*0.23");
    add("over-175", ZEL::EventKind::kOverexposed, true,
        "a bright scene, mean luma about 175, which is no fault", false, "235-(235-val)*0.55");
}

void addSound(std::vector<Case>& cases) {
    const auto add = [&](const char* name, ZEL::EventKind kind, bool hard, const char* about,
                         std::vector<ZEL::TimeSpan> truth, const std::string& graph) {
        cases.push_back({name, kind, hard, about, std::move(truth), {sound(graph)}});
    };
    const auto speech = [](const std::string& filter) { return kSpeech + ",atrim=0:12" + filter; };
    const std::string gap = ",asetnsamples=480,volume=0:" + kDuring;
    const auto over = [](const std::string& a, const std::string& b) {
        return a + "[x];" + b + "[y];[x][y]amix=normalize=0:duration=first";
    };
    add("mute-gap", ZEL::EventKind::kMute, false, "4 s of zeros in speech", kMiddle, speech(gap));
    add("mute-none", ZEL::EventKind::kMute, false, "speech with its own pauses", kNever, speech(""));
    add("mute-dither", ZEL::EventKind::kMute, true, "a gap that is not zero, but dither of one step", kMiddle,
        over(speech(gap), "anoisesrc=r=48000:d=12:a=0.00004:c=white"));
    add("mute-hiss", ZEL::EventKind::kMute, true, "a quiet hiss at -50 dB in the gap, which is no silence",
        kNever, over(speech(gap), "anoisesrc=r=48000:d=12:a=0.006:c=white"));
    add("mute-short", ZEL::EventKind::kMute, true, "a gap of 1.5 s", {{4.0, 5.5}},
        speech(",asetnsamples=480,volume=0:enable='between(t,4,5.49)'"));

    const std::vector<ZEL::TimeSpan> whole{{0.0, 12.0}};
    add("low-quiet", ZEL::EventKind::kLowVoice, false, "speech 35 dB too quiet", whole,
        speech(",volume=-35dB"));
    add("low-none", ZEL::EventKind::kLowVoice, false, "speech at its usual level", kNever, speech(""));
    add("low-part", ZEL::EventKind::kLowVoice, true, "speech that is 35 dB too quiet for 4 s", kMiddle,
        speech(",asetnsamples=480,volume=-35dB:" + kDuring));
    add("high-clipped", ZEL::EventKind::kHighVoice, false, "speech driven far into clipping", whole,
        speech(",volume=50dB"));
    add("high-none", ZEL::EventKind::kHighVoice, false, "speech at its usual level", kNever, speech(""));
    add("high-part", ZEL::EventKind::kHighVoice, true, "speech driven into clipping for 4 s", kMiddle,
        speech(",asetnsamples=480,volume=50dB:" + kDuring));

    const auto noise = [](const char* colour) {
        return fmt::format("anoisesrc=r=48000:d=8:a=0.1:c={}", colour);
    };
    const auto between = [](const std::string& middle) {
        return kSpeech + ",asplit[s1][s2];[s1]atrim=0:4[a];[s2]atrim=4:8,asetpts=PTS-STARTPTS[c];" + middle +
               "[b];[a][b][c]concat=n=3:v=0:a=1";
    };
    const std::vector<ZEL::TimeSpan> gap8{{4.0, 12.0}};
    add("novoice-noise", ZEL::EventKind::kNoVoice, false, "8 s of pink noise between speech", gap8,
        between(noise("pink")));
    add("novoice-none", ZEL::EventKind::kNoVoice, false, "speech throughout", kNever, speech(""));
    add("novoice-hum", ZEL::EventKind::kNoVoice, true, "8 s of mains hum between speech", gap8,
        between("aevalsrc='0.2*sin(314*t)+0.1*sin(942*t)':s=48000:d=8"));
    add("novoice-over-noise", ZEL::EventKind::kNoVoice, true, "speech over noise, 15 dB below it", kNever,
        over(speech(""), "anoisesrc=r=48000:d=12:a=0.03:c=pink"));
    add("novoice-beat", ZEL::EventKind::kNoVoice, true, "8 s of drum beats between speech", gap8,
        between("aevalsrc='0.5*sin(1200*t)*exp(-30*mod(t,0.5))':s=48000:d=8"));
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    addBlack(cases);
    addGreen(cases);
    addFreeze(cases);
    addBlock(cases);
    addExposure(cases);
    addSound(cases);
    return cases;
}

}  // namespace

const std::vector<Case>& corpus() {
    static const std::vector<Case> cases = allCases();
    return cases;
}

}  // namespace zel_monitor::selftest
