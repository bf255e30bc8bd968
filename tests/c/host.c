/* A host in C11 (and, included from host.cc, in C++11): all that the flat interface offers, used as a
 * stranger would. */
#include <zel/zel_c.h>

#include <math.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kWidth = 64, kHeight = 48, kRate = 8000 };

#define CHECK(condition)                                                                            \
    do {                                                                                            \
        if (!(condition)) {                                                                         \
            fprintf(stderr, "%s:%d: %s (%s)\n", __FILE__, __LINE__, #condition, zelc_last_error()); \
            exit(1);                                                                                \
        }                                                                                           \
    } while (0)

static uint8_t luma[kWidth * kHeight];
static uint8_t chroma[kWidth * kHeight / 2];

/* A frame of one luma, or noise that differs from call to call; neutral chroma. */
static zelc_frame frameOf(int level) {
    static uint32_t noise = 1;
    zelc_frame frame = ZELC_INIT(zelc_frame);
    for (size_t i = 0; i < sizeof luma; ++i) {
        noise = noise * 1664525U + 1013904223U;
        luma[i] = level >= 0 ? (uint8_t)level : (uint8_t)(noise >> 24U);
    }
    memset(chroma, 128, sizeof chroma);
    frame.width = kWidth;
    frame.height = kHeight;
    frame.data[0] = luma;
    frame.data[1] = chroma;
    frame.data[2] = chroma;
    frame.stride[0] = kWidth;
    frame.stride[1] = frame.stride[2] = kWidth / 2;
    return frame;
}

static zelc_frame inTurn(zelc_frame frame) {
    frame.format = ZELC_NV12;
    frame.data[2] = NULL;
    frame.stride[1] = kWidth;
    return frame;
}

static zelc_audio silence(void) {
    static const int16_t samples[2 * kRate / 10] = {0};
    zelc_audio audio = ZELC_INIT(zelc_audio);
    audio.sample_rate = kRate;
    audio.channels = 2;
    audio.samples = kRate / 10;
    audio.data = samples;
    return audio;
}

static void ignoreLog(void* user, const char* text, size_t bytes) {
    (void)text;
    *(size_t*)user += bytes;
}

static void detectorTells(void) {
    zelc_config config = ZELC_INIT(zelc_config);
    zelc_detector* detector = NULL;
    zelc_video_verdict seen = ZELC_INIT(zelc_video_verdict);
    zelc_audio_verdict heard = ZELC_INIT(zelc_audio_verdict);
    zelc_frame frame = frameOf(16);
    zelc_audio audio = silence();
    CHECK(zelc_config_default(&config) == ZELC_OK && config.block_corners == 20.0F);
    config.audio_period_s = 0.3;
    CHECK(zelc_detector_new(&config, &detector) == ZELC_OK);

    CHECK(zelc_detector_video(detector, &frame, &seen) == ZELC_OK && seen.screen == ZELC_SCREEN_BLACK);
    memset(chroma, 0, sizeof chroma);
    memset(luma, 0, sizeof luma);
    frame = inTurn(frame);
    CHECK(zelc_detector_video(detector, &frame, &seen) == ZELC_OK && seen.screen == ZELC_SCREEN_GREEN);
    frame = frameOf(-1);
    CHECK(zelc_detector_video(detector, &frame, &seen) == ZELC_OK && seen.screen == ZELC_SCREEN_NORMAL);

    for (int i = 1; i <= 3; ++i) {
        CHECK(zelc_detector_audio(detector, &audio, &heard) == ZELC_OK && heard.is_complete == (i == 3));
    }
    CHECK(heard.is_mute && heard.level == 0);
    zelc_detector_free(detector);
}

/* Refused, with a reason, and nothing else happens. */
static void nonsenseIsRefused(void) {
    zelc_detector* detector = NULL;
    zelc_video_verdict seen = ZELC_INIT(zelc_video_verdict);
    zelc_config config = ZELC_INIT(zelc_config);
    zelc_frame frame = frameOf(16);
    zelc_audio audio = silence();
    CHECK(zelc_detector_new(NULL, NULL) == ZELC_INVALID && zelc_last_error()[0] != '\0');
    config.struct_size = 0;
    CHECK(zelc_detector_new(&config, &detector) == ZELC_INVALID && detector == NULL);
    CHECK(zelc_detector_new(NULL, &detector) == ZELC_OK);
    CHECK(zelc_detector_video(NULL, &frame, &seen) == ZELC_INVALID);
    CHECK(zelc_detector_video(detector, NULL, &seen) == ZELC_INVALID);
    CHECK(zelc_detector_video(detector, &frame, NULL) == ZELC_INVALID);
    frame.width = kWidth - 1;
    CHECK(zelc_detector_video(detector, &frame, &seen) == ZELC_INVALID);
    frame.width = 0xFFFFFFFEU;
    frame.height = 0xFFFFFFFEU;
    CHECK(zelc_detector_video(detector, &frame, &seen) == ZELC_INVALID);
    frame = frameOf(16);
    frame.stride[2] = 1;
    CHECK(zelc_detector_video(detector, &frame, &seen) == ZELC_INVALID);
    frame = frameOf(16);
    frame.format = 2;
    CHECK(zelc_detector_video(detector, &frame, &seen) == ZELC_INVALID);
    audio.channels = 0;
    CHECK(zelc_stream_audio(NULL, &audio, 0) == ZELC_INVALID);
    CHECK(zelc_kind_by_name("snow") == ZELC_INVALID);
    zelc_detector_free(detector);
    zelc_detector_free(NULL);
    CHECK(zelc_stream_free(NULL) == ZELC_OK);
    zelc_analyser_free(NULL);
}

/* An older caller's struct ends early, a newer one's has more behind: what is beyond is left alone. */
static void otherVersionsUnderstandEachOther(void) {
    struct {
        zelc_video_verdict verdict;
        uint32_t newer;
    } wide = {ZELC_INIT(zelc_video_verdict), 7};
    zelc_detector* detector = NULL;
    const zelc_frame frame = frameOf(16);
    CHECK(zelc_detector_new(NULL, &detector) == ZELC_OK);
    wide.verdict.struct_size = (uint32_t)sizeof wide;
    CHECK(zelc_detector_video(detector, &frame, &wide.verdict) == ZELC_OK);
    CHECK(wide.verdict.screen == ZELC_SCREEN_BLACK && wide.newer == 7);
    CHECK(wide.verdict.struct_size == sizeof wide);
    wide.verdict.struct_size = (uint32_t)offsetof(zelc_video_verdict, exposure);
    wide.verdict.exposure = 9;
    CHECK(zelc_detector_video(detector, &frame, &wide.verdict) == ZELC_OK && wide.verdict.exposure == 9);
    zelc_detector_free(detector);
}

struct Heard {
    pthread_mutex_t mutex;
    pthread_cond_t changed;
    zelc_stream* stream;
    int64_t last_video;
    int64_t last_audio;
    int black;
    int heartbeats;
    int finals;
    int busy;
};

static void onVideo(void* user, int64_t index, const zelc_video_verdict* verdict) {
    struct Heard* heard = (struct Heard*)user;
    pthread_mutex_lock(&heard->mutex);
    heard->last_video = index;
    heard->black += verdict->screen == ZELC_SCREEN_BLACK;
    heard->busy += zelc_stream_free(heard->stream) == ZELC_BUSY;
    pthread_cond_signal(&heard->changed);
    pthread_mutex_unlock(&heard->mutex);
}

static void onAudio(void* user, int64_t index, const zelc_audio_verdict* verdict) {
    struct Heard* heard = (struct Heard*)user;
    pthread_mutex_lock(&heard->mutex);
    heard->last_audio = verdict->is_complete && verdict->is_mute ? index : -1;
    pthread_cond_signal(&heard->changed);
    pthread_mutex_unlock(&heard->mutex);
}

static int countField(void* user, const char* key, const char* value) {
    (void)value;
    *(int*)user += strncmp(key, "zel_", 4) == 0;
    return 0;
}

static void onReport(void* user, const zelc_report* report, int is_final) {
    struct Heard* heard = (struct Heard*)user;
    int fields = 0;
    zelc_report_visit(report, &countField, &fields);
    pthread_mutex_lock(&heard->mutex);
    heard->heartbeats += !is_final;
    heard->finals += is_final;
    CHECK(fields >= 5 && zelc_report_value(report, "zel_vframes") != NULL);
    CHECK(zelc_report_value(report, "nobody") == NULL);
    CHECK(strstr(zelc_report_json(report), "\"zel_vframes\":\"") != NULL);
    pthread_cond_signal(&heard->changed);
    pthread_mutex_unlock(&heard->mutex);
}

static void streamCallsBack(void) {
    struct Heard heard = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, NULL, -1, -1, 0, 0, 0, 0};
    zelc_stream_callbacks callbacks = ZELC_INIT(zelc_stream_callbacks);
    zelc_config config = ZELC_INIT(zelc_config);
    zelc_frame frame = frameOf(16);
    const zelc_audio audio = silence();
    uint64_t dropped = 99;
    callbacks.user = &heard;
    callbacks.on_video = &onVideo;
    callbacks.on_audio = &onAudio;
    callbacks.on_report = &onReport;
    CHECK(zelc_config_default(&config) == ZELC_OK);
    config.heartbeat_s = 1;
    config.audio_period_s = 0.1;
    CHECK(zelc_stream_new(&config, &callbacks, &heard.stream) == ZELC_OK);
    pthread_mutex_lock(&heard.mutex);
    CHECK(zelc_stream_video(heard.stream, &frame, 41) == ZELC_OK);
    frame = inTurn(frame);
    CHECK(zelc_stream_video(heard.stream, &frame, 42) == ZELC_OK);
    CHECK(zelc_stream_audio(heard.stream, &audio, 7) == ZELC_OK);
    memset(luma, 255, sizeof luma); /* the stream has its own copy */
    while (heard.last_video != 42 || heard.last_audio != 7 || heard.heartbeats == 0) {
        pthread_cond_wait(&heard.changed, &heard.mutex);
    }
    CHECK(heard.black == 2 && heard.busy == 2 && heard.finals == 0);
    pthread_mutex_unlock(&heard.mutex);
    CHECK(zelc_stream_drops(heard.stream, &dropped, NULL) == ZELC_OK && dropped == 0);
    CHECK(zelc_stream_free(heard.stream) == ZELC_OK);
    CHECK(heard.finals == 1);
}

struct Events {
    zelc_analyser* analyser;
    int raised;
    int cleared;
    int suspected;
    int frames;
    int black_frames;
    int silences;
    uint32_t kind;
    double start_s;
    double end_s;
    double gap_s;
};

static void onRaised(void* user, uint32_t kind, double start_s, double noticed_s) {
    struct Events* events = (struct Events*)user;
    CHECK(noticed_s > start_s && zelc_analyser_reached(events->analyser) > start_s);
    ++events->raised;
    events->kind = kind;
}

static void onSuspected(void* user, uint32_t kind) {
    ((struct Events*)user)->suspected += kind == (uint32_t)zelc_kind_by_name("black");
}

static void onGap(void* user, uint32_t track, double start_s, double end_s) {
    CHECK(track == ZELC_TRACK_AUDIO);
    ((struct Events*)user)->gap_s = end_s - start_s;
}

static void onFrame(void* user, uint64_t index, double start_s, const zelc_video_verdict* verdict) {
    struct Events* events = (struct Events*)user;
    CHECK(index == (uint64_t)events->frames && fabs(start_s - 10.0 - (double)index / 25.0) < 1e-6);
    ++events->frames;
    events->black_frames += verdict->screen == ZELC_SCREEN_BLACK;
}

static void onSilence(void* user, double start_s, double end_s, const zelc_audio_verdict* verdict) {
    CHECK(verdict->is_complete && verdict->is_mute && fabs(end_s - start_s - 0.1) < 1e-6);
    ++((struct Events*)user)->silences;
}

static void onCleared(void* user, const zelc_event* event) {
    struct Events* events = (struct Events*)user;
    CHECK(event->kind == events->kind && event->counts);
    CHECK(event->has_evidence && event->value > event->limit && event->limit > 0.5);
    ++events->cleared;
    if (event->kind == (uint32_t)zelc_kind_by_name("black")) {
        CHECK(!event->is_open_at_end);
        events->start_s = event->start_s;
        events->end_s = event->end_s;
    }
}

static void analyserRaisesAndClears(void) {
    struct Events events;
    const zelc_audio audio = silence();
    zelc_analyser_options options = ZELC_INIT(zelc_analyser_options);
    zelc_analyser_callbacks callbacks = ZELC_INIT(zelc_analyser_callbacks);
    zelc_analyser* analyser = NULL;
    const int black = zelc_kind_by_name("black");
    zelc_frame frame;
    memset(&events, 0, sizeof events);
    callbacks.user = &events;
    callbacks.on_raised = &onRaised;
    callbacks.on_cleared = &onCleared;
    callbacks.on_suspected = &onSuspected;
    callbacks.on_gap = &onGap;
    callbacks.on_frame = &onFrame;
    callbacks.on_silence_period = &onSilence;
    CHECK(zelc_analyser_options_default(&options) == ZELC_OK && options.has_audio);
    CHECK(zelc_analyser_new(&options, &callbacks, &analyser) == ZELC_OK);
    events.analyser = analyser;
    for (uint32_t kind = 0; kind < zelc_kind_count(); ++kind) {
        CHECK(kind == (uint32_t)black || zelc_analyser_set_rule(analyser, kind, 1e6, 0.1) == ZELC_OK);
    }
    CHECK(zelc_analyser_set_rule(analyser, (uint32_t)zelc_kind_by_name("stall"), 1.5, 0.1) == ZELC_OK);
    CHECK(zelc_analyser_set_rule(analyser, (uint32_t)black, 0.3, 0.1) == ZELC_OK);
    CHECK(zelc_analyser_set_rule(analyser, zelc_kind_count(), 0.3, 0.1) == ZELC_INVALID);
    for (int i = 0; i < 100; ++i) {
        frame = frameOf(i >= 25 && i < 75 ? 16 : -1);
        CHECK(zelc_analyser_video(analyser, &frame, 10.0 + i / 25.0, 1 / 25.0) == ZELC_OK);
    }
    for (int i = 0; i < 10; ++i) { /* the sound ends three seconds early */
        CHECK(zelc_analyser_audio(analyser, &audio, 10.0 + i / 10.0) == ZELC_OK);
    }
    CHECK(zelc_analyser_video(analyser, &frame, NAN, 0.04) == ZELC_INVALID);
    CHECK(zelc_analyser_end(analyser, -1.0) == ZELC_OK);
    CHECK(zelc_analyser_video(analyser, &frame, 14.0, 0.04) == ZELC_ENDED);
    CHECK(fabs(zelc_analyser_reached(analyser) - 14.0) < 0.05);
    CHECK(events.raised == 2 && events.cleared == 2); /* black, and the stall of the sound */
    CHECK(fabs(events.start_s - 11.0) < 0.05 && fabs(events.end_s - 13.0) < 0.05);
    CHECK(events.suspected == 1 && events.frames == 100 && events.black_frames == 50 &&
          events.silences == 10);
    CHECK(fabs(events.gap_s - 3.0) < 0.05);
    CHECK(zelc_unwrapped(0.5, 26.0, 26.5) == 27.0);
    zelc_analyser_free(analyser);
}

/* The kinds are told one by one, so that nobody lists them. */
static void kindsTellOfThemselves(void) {
    zelc_config plain = ZELC_INIT(zelc_config);
    zelc_config own = ZELC_INIT(zelc_config);
    uint32_t looks = 0;
    for (uint32_t number = 0; number < zelc_kind_count(); ++number) {
        zelc_kind kind = ZELC_INIT(zelc_kind);
        CHECK(zelc_kind_info(number, &kind) == ZELC_OK && zelc_kind_by_name(kind.name) == (int)number);
        CHECK(strlen(kind.colour) == 7 && kind.unit[0] != '\0' && kind.meaning[0] != '\0' &&
              kind.min_s >= 0.0);
        looks += kind.tier == ZELC_TIER_LOOK;
        if (strcmp(kind.name, "damage") == 0) {
            CHECK(kind.source == ZELC_SOURCE_INPUT);
        }
    }
    CHECK(looks > 0 && looks < zelc_kind_count());
    CHECK(zelc_config_default(&plain) == ZELC_OK && zelc_config_of_analyser(&own) == ZELC_OK);
    CHECK(plain.freeze_frames == 10.0F && own.freeze_frames == 1.0F && own.audio_period_s == 0.1);
}

int main(void) {
    size_t logged = 0;
    zelc_set_log(&ignoreLog, &logged);
    CHECK(zelc_version() >> 16U == ZELC_VERSION >> 16U);
    detectorTells();
    nonsenseIsRefused();
    otherVersionsUnderstandEachOther();
    streamCallsBack();
    analyserRaisesAndClears();
    kindsTellOfThemselves();
    zelc_set_log(NULL, NULL);
    return 0;
}
