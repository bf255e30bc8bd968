#include <zel/algo/algo_facade.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "support/rendered_sound.h"
#include "support/sound.h"

// Prints the voice table of docs/accuracy.md: what the share of voiced chunks is for one-period clips of
// several kinds. Every clip is played twice in a row, so that the start of a stream and its later course can
// be told apart.

namespace {

constexpr int kRate = 48'000;
constexpr double kSeconds = 10.0;     // one period
constexpr double kLoudness = 2000.0;  // root mean square of speech, -24 dB of full scale

using Sound = std::vector<int16_t>;

struct Class {
    std::string name;
    std::vector<Sound> clips;
};

struct Measured {
    double first_share;
    double later_share;
    bool no_voice;  // verdict on the later period
};

Sound render(const std::string& source) {
    const Sound sound = support::renderSound(source, kRate, kSeconds);
    return support::scaled(sound, kLoudness / support::rootMeanSquare(sound));
}

std::vector<Sound> speech() {
    constexpr std::array<const char*, 2> kTexts = {
        "The ferry leaves the harbour at seven in the morning. It carries newspapers, bread and a few sleepy "
        "children to the island. By nine the fog has lifted, and the captain drinks his second cup of "
        "coffee. "
        "Nobody hurries, because the next ferry goes only in the evening",
        "Please speak after the tone. Your call is important to us. Press one for trains, two for buses, and "
        "three if you have lost your luggage. All of our lines are busy at the moment. You are caller number "
        "twelve, and the waiting time is about four minutes"};
    std::vector<Sound> clips;
    for (const char* const voice : {"kal", "awb", "rms", "slt"}) {
        for (const char* const text : kTexts) {
            clips.push_back(render("flite=voice=" + std::string(voice) + ":text='" + text + "'"));
        }
    }
    return clips;
}

Sound noise(const std::string& color, size_t seed) {
    return render("anoisesrc=r=48000:color=" + color + ":seed=" + std::to_string(seed));
}

std::vector<Sound> speechInNoise(const std::vector<Sound>& clean, double ratio_db) {
    std::vector<Sound> clips;
    for (size_t i = 0; i < clean.size(); ++i) {
        clips.push_back(support::withNoise(clean[i], noise("pink", i + 1), ratio_db));
    }
    return clips;
}

std::vector<Class> classes() {
    const std::vector<Sound> clean = speech();
    return {
        {"speech, clean", clean},
        {"speech, 20 dB over pink noise", speechInNoise(clean, 20)},
        {"speech, 10 dB over pink noise", speechInNoise(clean, 10)},
        {"speech, 5 dB over pink noise", speechInNoise(clean, 5)},
        {"speech, 0 dB over pink noise", speechInNoise(clean, 0)},
        {"noise alone (pink, white, brown)",
         {noise("pink", 11), noise("pink", 12), noise("white", 13), noise("white", 14), noise("brown", 15),
          noise("brown", 16)}},
        {"steady tones and chords",
         {render("sine=220"), render("sine=1000"), render("sine=3300"),
          render("aevalsrc='sin(2*PI*262*t)+sin(2*PI*330*t)+sin(2*PI*392*t)':s=48000"),
          render("aevalsrc='sin(2*PI*110*t)+sin(2*PI*165*t)+sin(2*PI*440*t)':s=48000")}},
        {"tones and chords, two notes a second",
         {render("aevalsrc='sin(2*PI*(220+40*mod(floor(2*t),8))*t)*exp(-4*mod(t,0.5))':s=48000"),
          render("aevalsrc='(sin(2*PI*262*t)+sin(2*PI*330*t)+sin(2*PI*392*t))*exp(-4*mod(t,0.5))':s=48000"),
          render(
              "aevalsrc='(sin(2*PI*262*t)+sin(2*PI*330*t)+sin(2*PI*392*t))*exp(-12*mod(t,0.5))':s=48000")}},
        {"digital silence", {Sound(static_cast<size_t>(kSeconds * kRate), 0)}},
    };
}

ZELAlgo::ZELAudioResult playPeriod(ZELAlgo::AlgoFacade& facade, const Sound& sound) {
    constexpr size_t kPacket = kRate / 100;
    ZELAlgo::ZELAudioResult result{};
    for (size_t first = 0; first + kPacket <= sound.size(); first += kPacket) {
        facade.detectAudio({kRate, kPacket, 1, sound.data() + first}, result);
    }
    return result;
}

Measured measure(const Sound& clip) {
    ZELAlgo::AlgoFacade facade;
    const ZELAlgo::ZELAudioResult first = playPeriod(facade, clip);
    const ZELAlgo::ZELAudioResult later = playPeriod(facade, clip);
    return {first.voice_scale_longtime, later.voice_scale_longtime, later.is_novoice_longtime == 1};
}

/// Mean, then smallest to largest.
std::string spread(const std::vector<Measured>& all, double Measured::*share) {
    double sum = 0.0;
    double least = 1.0;
    double most = 0.0;
    for (const Measured& measured : all) {
        sum += measured.*share;
        least = std::min(least, measured.*share);
        most = std::max(most, measured.*share);
    }
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%.3f (%.3f to %.3f)", sum / static_cast<double>(all.size()),
                  least, most);
    return text.data();
}

}  // namespace

int main() {
    std::printf("| class | clips | share, first period | share, later period | `no_voice` later |\n");
    std::printf("|---|---|---|---|---|\n");
    for (const Class& kind : classes()) {
        std::vector<Measured> all;
        std::transform(kind.clips.begin(), kind.clips.end(), std::back_inserter(all), &measure);
        const auto without_voice =
            std::count_if(all.begin(), all.end(), [](const Measured& measured) { return measured.no_voice; });
        std::printf("| %s | %zu | %s | %s | %td of %zu |\n", kind.name.c_str(), all.size(),
                    spread(all, &Measured::first_share).c_str(), spread(all, &Measured::later_share).c_str(),
                    without_voice, all.size());
    }
}
