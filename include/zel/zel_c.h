/*
 * The flat C interface of libzel, for every language: library libzel-c, prefix zelc_. C11, and C++ from C++11
 * on; nothing of C++ crosses it, and no exception leaves it.
 *
 * Three objects, from the plainest to the one that thinks along:
 *
 * - a detector: a frame or audio in, verdicts out, on the calling thread;
 * - a stream: feeds copy and return, verdicts and heartbeats come by callback from the library's own threads;
 * - an analyser: time-stamped frames and audio in, events raised and cleared.
 *
 * Rules for all of it:
 *
 * - Functions that can fail return ZELC_OK or a negative code; zelc_last_error() then tells why in words.
 * - Every struct begins with struct_size, which the caller sets to the size that it was compiled with, as the
 *   macro ZELC_INIT does. Fields are only ever added at the end, so an older caller and a newer library, or
 *   the other way round, understand each other: what one of them lacks has its default, or is left out.
 * - What is passed in is borrowed for the call. What a callback is given is valid during the callback.
 * - Callbacks must return: no C++ exception and no longjmp may leave them. `user` is handed back as it is.
 * - Different objects may be used on different threads at the same time. For one object see its section.
 * - A child of fork() may not use the objects of its parent.
 */
#ifndef ZEL_ZEL_C_H_
#define ZEL_ZEL_C_H_

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(ZELC_BUILD)
#define ZELC_API __declspec(dllexport)
#else
#define ZELC_API __declspec(dllimport)
#endif
#else
#define ZELC_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
template <typename Struct>
inline Struct zelc_sized() { /* see ZELC_INIT */
    Struct sized = Struct();
    sized.struct_size = static_cast<uint32_t>(sizeof(Struct));
    return sized;
}

extern "C" {
#endif

/* ---- version, errors, log ---- */

#define ZELC_VERSION 0x010000U /* major << 16 | minor << 8 | patch, of this header */

/* Of the library that was loaded. The same major number means that this header fits. */
ZELC_API uint32_t zelc_version(void);

enum {
    ZELC_OK = 0,
    ZELC_INVALID = -1, /* an argument: null, out of range, or a struct too small to be one */
    ZELC_NO_MEMORY = -2,
    ZELC_NO_THREAD = -3, /* the system gives no thread */
    ZELC_BUSY = -4,      /* called from a callback that it would have to wait for */
    ZELC_ENDED = -5,     /* fed after the end of the stream */
    ZELC_INTERNAL = -6   /* a fault of the library: please report it */
};

/* Why the calling thread's last failing call failed, in words; empty if none has. Valid until the next one
   fails. */
ZELC_API const char* zelc_last_error(void);

/* A zeroed struct that knows its size: zelc_frame frame = ZELC_INIT(zelc_frame); */
#ifdef __cplusplus
#define ZELC_INIT(type) zelc_sized<type>()
#else
#define ZELC_INIT(type) ((type){.struct_size = (uint32_t)sizeof(type)})
#endif

/*
 * Hands every log line of the library to `write`, on the thread that logs, one at a time: `text` of `bytes`
 * bytes, not terminated. Null brings them back to where the environment variable ZEL_LOG sends them
 * ("stdout", which is the default, "stderr", "off" or the name of a file). The call waits for a line that is
 * being written.
 */
typedef void (*zelc_log)(void* user, const char* text, size_t bytes);
ZELC_API void zelc_set_log(zelc_log write, void* user);
/* Drops every log line, whatever ZEL_LOG says, until zelc_set_log() is called. */
ZELC_API void zelc_silence_log(void);

/* ---- what is fed ---- */

enum {
    ZELC_I420 = 0, /* three planes: Y, Cb, Cr */
    ZELC_NV12 = 1  /* two planes: Y, then Cb and Cr in turn */
};

/* One frame of 8 bits per sample, limited range, as a decoder leaves it. */
typedef struct zelc_frame {
    uint32_t struct_size;
    uint32_t format; /* ZELC_I420 or ZELC_NV12 */
    uint32_t width;  /* of the luma: even, and so that a frame has less than 2^31 bytes */
    uint32_t height; /* even */
    const uint8_t* data[3];
    size_t stride[3]; /* bytes from one row to the next, at least those of a row */
    /* 1 if a decoder made up part of it, or did without a frame that it refers to. For analysers: what damage
       leaves of a frame is not told as a fault of the picture. */
    uint32_t is_damaged;
} zelc_frame;

/* Interleaved signed 16-bit samples in native byte order; of several channels their mean is heard. */
typedef struct zelc_audio {
    uint32_t struct_size;
    uint32_t sample_rate; /* Hz; below 100 nothing is heard */
    uint32_t channels;
    uint32_t samples; /* per channel */
    const int16_t* data;
} zelc_audio;

/* What detectors look for and how strict they are. */
typedef struct zelc_config {
    uint32_t struct_size;
    uint8_t look_for_black; /* 1 or 0, like the next four; all 1 by default */
    uint8_t look_for_green;
    uint8_t look_for_exposure;
    uint8_t look_for_block;
    uint8_t look_for_freeze;
    uint8_t reserved[3];
    float black_ratio;      /* share of dark samples that makes a black screen; 0.95 */
    float green_ratio;      /* share of zero samples that makes a green screen; 0.95 */
    float block_corners;    /* pairs of corners that make a frame blocky; 20 */
    float freeze_frames;    /* like frames in a row that make a freeze; 10 */
    float mute_level;       /* mean absolute sample value up to which a period is mute; 2 */
    float low_voice_level;  /* level of voiced sound up to which a period is too quiet; 500 */
    float high_voice_level; /* and from which it is too loud; 20000 */
    float no_voice_share;   /* share of voiced sound up to which a period has no voice; 0.01 */
    double audio_period_s;  /* length of an audio period, seconds; 10 */
    uint32_t heartbeat_s;   /* streams only: seconds between heartbeats, up to 2^31 - 1; 0 (none) */
} zelc_config;

/* Writes the defaults. `config` must know its size. */
ZELC_API int zelc_config_default(zelc_config* config);
/* Writes what an analyser asks its detectors for, which is not the same. */
ZELC_API int zelc_config_of_analyser(zelc_config* config);

/* ---- verdicts ---- */

enum { ZELC_SCREEN_NORMAL = 0, ZELC_SCREEN_BLACK = 1, ZELC_SCREEN_GREEN = 2 };
enum { ZELC_EXPOSURE_NORMAL = 0, ZELC_EXPOSURE_UNDER = 1, ZELC_EXPOSURE_OVER = 2 };

typedef struct zelc_video_verdict {
    uint32_t struct_size;
    uint32_t screen;   /* ZELC_SCREEN_... */
    uint32_t exposure; /* ZELC_EXPOSURE_...; normal for a black or green screen */
    uint32_t is_block; /* 1 or 0 */
    uint32_t is_freeze;
} zelc_video_verdict;

/* What a period of audio gave; all is 0 while none is complete. */
typedef struct zelc_audio_verdict {
    uint32_t struct_size;
    uint32_t is_complete; /* 1 or 0, like all that begin so */
    uint32_t level;       /* mean absolute sample value, 0 to 32768 */
    uint32_t voice_level; /* of voiced sound */
    float voice_share;    /* 0 to 1 */
    uint32_t is_mute;
    uint32_t is_low_voice;
    uint32_t is_high_voice;
    uint32_t is_no_voice;
} zelc_audio_verdict;

/* ---- detector: no thread, no queue; one thread at a time ---- */

typedef struct zelc_detector zelc_detector;

/* `config` may be null for the defaults. Writes the object to `detector`, or null if it fails. */
ZELC_API int zelc_detector_new(const zelc_config* config, zelc_detector** detector);
/* Null is freed as well, here and below. */
ZELC_API void zelc_detector_free(zelc_detector* detector);

/* Writes the verdicts on the next frame to `verdict`, which must know its size, or leaves it as it is. */
ZELC_API int zelc_detector_video(zelc_detector* detector, const zelc_frame* frame,
                                 zelc_video_verdict* verdict);
/* The same for audio, of any length: what the last period that it completed gave. The first sample rate holds
 * for all. */
ZELC_API int zelc_detector_audio(zelc_detector* detector, const zelc_audio* audio,
                                 zelc_audio_verdict* verdict);

/* ---- stream: feeds copy and return; any thread ---- */

typedef struct zelc_stream zelc_stream;
typedef struct zelc_report zelc_report;

/*
 * Any may be null. Verdicts come from the stream's worker thread in the order of the feeds of their kind,
 * heartbeats from a thread of their own, the final report from the thread that frees the stream. A callback
 * may call everything here but zelc_stream_free() of its own stream.
 */
typedef struct zelc_stream_callbacks {
    uint32_t struct_size;
    uint32_t reserved;
    void* user;
    /* `index` is that of the feed. Frames that were dropped have no verdict, and audio has one when it
       completes a period. */
    void (*on_video)(void* user, int64_t index, const zelc_video_verdict* verdict);
    void (*on_audio)(void* user, int64_t index, const zelc_audio_verdict* verdict);
    /* Every heartbeat_s seconds what happened since the last one, and in the end, once, with is_final of 1,
       what happened in all. */
    void (*on_report)(void* user, const zelc_report* report, int is_final);
} zelc_stream_callbacks;

/* Starts the stream. Both structs may be null. */
ZELC_API int zelc_stream_new(const zelc_config* config, const zelc_stream_callbacks* callbacks,
                             zelc_stream** stream);

/*
 * Copies a frame, queues it and returns; never waits for the detectors. Beyond 10 frames of video or half a
 * second of audio the oldest queued is dropped. `index` is the caller's own.
 */
ZELC_API int zelc_stream_video(zelc_stream* stream, const zelc_frame* frame, int64_t index);
ZELC_API int zelc_stream_audio(zelc_stream* stream, const zelc_audio* audio, int64_t index);

/* How many frames, and steps of 10 ms of audio, were dropped so far; either may be null. */
ZELC_API int zelc_stream_drops(const zelc_stream* stream, uint64_t* video, uint64_t* audio);

/*
 * Stops the stream: frames that still wait are left out, the final report goes out, and no callback comes any
 * more when it returns. Without memory for the report it is freed without one. ZELC_BUSY, and the stream
 * lives on, from one of its own callbacks. No other thread may use the stream meanwhile.
 */
ZELC_API int zelc_stream_free(zelc_stream* stream);

/* Visits the fields in the order of their keys until `visit` returns other than 0. */
ZELC_API void zelc_report_visit(const zelc_report* report,
                                int (*visit)(void* user, const char* key, const char* value), void* user);
/* The value of one field; null if there is none. Valid as long as the report. */
ZELC_API const char* zelc_report_value(const zelc_report* report, const char* key);
/* All of it as one JSON object of strings. Null without memory. */
ZELC_API const char* zelc_report_json(const zelc_report* report);

/* ---- kinds of events ----
 *
 * Numbered from 0 on in the order of reports, anew in each version of the library. Their names last.
 */

enum {
    ZELC_SOURCE_VIDEO = 0,
    ZELC_SOURCE_AUDIO = 1,
    ZELC_SOURCE_TIMESTAMPS = 2,
    ZELC_SOURCE_INPUT = 3 /* demuxer and decoder: an analyser, which sees neither, never tells of these */
};
enum {
    ZELC_TIER_FAULT = 0, /* wrong in any stream */
    ZELC_TIER_LOOK = 1   /* may be as it was meant to be, as a night scene and music without words are */
};

typedef struct zelc_kind {
    uint32_t struct_size;
    uint32_t source; /* ZELC_SOURCE_... */
    uint32_t tier;   /* ZELC_TIER_... */
    uint32_t reserved;
    const char* name;    /* as "black"; these texts live as long as the library */
    const char* unit;    /* what is measured, in words */
    const char* meaning; /* one line */
    const char* colour;  /* "#rrggbb", for charts */
    double min_s;        /* the default rule: the shortest event, */
    double gap_s;        /* and how much without the fault ends it */
} zelc_kind;

ZELC_API uint32_t zelc_kind_count(void);
/* `info` must know its size. */
ZELC_API int zelc_kind_info(uint32_t kind, zelc_kind* info);
/* The number of a name, or ZELC_INVALID. */
ZELC_API int zelc_kind_by_name(const char* name);

/* ---- analyser: time-stamped frames in, events out; one thread at a time ---- */

typedef struct zelc_analyser zelc_analyser;

/* A stretch of stream time in which something was wrong. Stream time is seconds on the clock of the first
   timestamps, and runs on where later ones jump. */
typedef struct zelc_event {
    uint32_t struct_size;
    uint32_t kind;
    double start_s;
    double end_s;
    double share;            /* of the stretch in which the fault was measured, 0 to 1 */
    uint32_t is_open_at_end; /* 1 if it was still there when the stream ended */
    uint32_t counts;         /* 0 if the fault thinned out after it was raised: not to be reported */
    uint32_t has_evidence;   /* 1 if the next two tell anything */
    uint32_t reserved;
    double value; /* what was measured while the fault was there, its mean in the unit of the kind, */
    double limit; /* and the limit that it was held against */
} zelc_event;

enum { ZELC_TRACK_VIDEO = 0, ZELC_TRACK_AUDIO = 1 };

/* Any may be null. Called on the thread that feeds, while it does. Of the analyser they may call
   zelc_analyser_reached(), and nothing else. Times are stream time. */
typedef struct zelc_analyser_callbacks {
    uint32_t struct_size;
    uint32_t reserved;
    void* user;
    /* The fault has lasted its minimum: it began at start_s, and the stream was at noticed_s. */
    void (*on_raised)(void* user, uint32_t kind, double start_s, double noticed_s);
    /* What was raised is over: once for each raise. */
    void (*on_cleared)(void* user, const zelc_event* event);
    /* The fault has been seen, and may become an event. */
    void (*on_suspected)(void* user, uint32_t kind);
    /* A track (ZELC_TRACK_...) has no frame for at least as long as the shortest stall. */
    void (*on_gap)(void* user, uint32_t track, double start_s, double end_s);
    /* The frame of this number, from 0 in the order fed, has its place in the stream. */
    void (*on_frame)(void* user, uint64_t index, double start_s, const zelc_video_verdict* verdict);
    /* A tenth of a second of audio is judged for silence, a second tells of speech. */
    void (*on_silence_period)(void* user, double start_s, double end_s, const zelc_audio_verdict* verdict);
    void (*on_voice_period)(void* user, double start_s, double end_s, const zelc_audio_verdict* verdict);
} zelc_analyser_callbacks;

typedef struct zelc_analyser_options {
    uint32_t struct_size;
    uint8_t has_video; /* 1 or 0: which tracks the stream has; both by default */
    uint8_t has_audio;
    uint8_t is_still; /* the video is one picture, such as a cover; 0 by default */
    uint8_t reserved;
    /* For live streams: a track that has fallen behind the other by more than so many seconds stalls.
       Negative, which is the default: what is missing is known when the track goes on, or at the end, as
       files want it. */
    double late_after_s;
} zelc_analyser_options;

/* Writes the defaults. `options` must know its size. */
ZELC_API int zelc_analyser_options_default(zelc_analyser_options* options);

/* Both structs may be null. */
ZELC_API int zelc_analyser_new(const zelc_analyser_options* options, const zelc_analyser_callbacks* callbacks,
                               zelc_analyser** analyser);
/* Does not end the stream: what is open stays unsaid. */
ZELC_API void zelc_analyser_free(zelc_analyser* analyser);

/* Takes the next frame, with the timestamp time_s and to be shown for duration_s (0: not known), in seconds.
   Timestamps may jump; those of few bits are to be unwrapped, see zelc_unwrapped(). Where memory gives out in
   the midst of a feed, the stream is over for the analyser: later ones are refused with ZELC_ENDED. */
ZELC_API int zelc_analyser_video(zelc_analyser* analyser, const zelc_frame* frame, double time_s,
                                 double duration_s);
/* Takes the next piece of audio, which begins at time_s. */
ZELC_API int zelc_analyser_audio(zelc_analyser* analyser, const zelc_audio* audio, double time_s);

/* The stream is over, and said that it would last declared_s seconds (not a number, or negative: it said
   nothing). Clears what is open; nothing can be fed any more. A second call does nothing. */
ZELC_API int zelc_analyser_end(zelc_analyser* analyser, double declared_s);

/* Changes the rule for a kind: the shortest event, and how much without the fault ends it, in seconds. */
ZELC_API int zelc_analyser_set_rule(zelc_analyser* analyser, uint32_t kind, double min_s, double gap_s);

/* How far the stream has come, in stream time. */
ZELC_API double zelc_analyser_reached(const zelc_analyser* analyser);

/* Timestamps of few bits begin again at zero every period_s: stamp_s in the turn in which it is nearest to
   expected_s. With a period of 0 they never wrap. All in seconds. */
ZELC_API double zelc_unwrapped(double stamp_s, double expected_s, double period_s);

#ifdef __cplusplus
}
#endif

#endif /* ZEL_ZEL_C_H_ */
