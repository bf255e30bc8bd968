/// The C interface of libzel: seventeen functions that a host calls, and the callbacks it lends.
///
/// Usual order: init_handle_with_interval; once per process set_cobalt_bool_callback,
/// set_cobalt_int_callback and set_tlm_upload_callback; set_heart_beat_callback (or the detail form) and
/// set_heart_beat_timer_switch_listener; start_zel_session; a feed per decoded frame; stop_zel_session;
/// release_handle.
///
/// Every function may be called from any thread, also from a callback. A handle must not be used during or
/// after its release. Failures are a false (or all-ones) result, some with a log line on standard output; the
/// only exceptions that can leave a function are those of the standard library (out of memory, no thread to
/// be had).
///
/// Callbacks: stop_zel_session and release_handle wait for a heartbeat of their stream that is under way on
/// another thread, so a callback must not wait for a thread that may be in one of them. They do not wait for
/// a callback that they are called from, or that waits for theirs. A stream's own callbacks, and what they
/// use, must live until release_handle returns; if it is called from one of them, until that one returns.
/// Those of the process must live as long as a stream is started, fed, stopped or has its timer. What a
/// callback throws ends there with a line in the log, and counts as no answer (false, -1, no more fields).
/// The library's threads, on which callbacks run as well, block all signals that are meant for the process,
/// and what a callback starts on them inherits that.
///
/// A child of fork() has none of the threads that work for its parent's handles: given one of these, every
/// function does nothing and returns false. Handles of its own it may open if no other thread of the parent
/// was in the library when it forked.
///
/// The log goes to standard output, or where the environment variable "ZEL_LOG" says when the first line is
/// written: "stdout", "stderr", "off", or the path of a file, which is appended to. Writing a line never
/// makes a thread wait and raises no signal: lines that a pipe, socket or terminal does not take at once are
/// dropped, and the next one that is taken says how many ("ZEL: WARN: 12 log lines were dropped").
///
/// ReportMap crosses the boundary by pointer, so host and library must be built with the same standard
/// library.
#ifndef ZEL_ZEL_H_
#define ZEL_ZEL_H_

#include <cstdint>
#include <map>
#include <string>

#if defined(_WIN32)
#define ZEL_EXPORT __declspec(dllexport)
#else
#define ZEL_EXPORT __attribute__((visibility("default")))
#endif

/// A report: text keys in byte order, text values. Integers are plain decimal, reals "%f", durations seconds.
typedef std::map<std::string, std::string> ReportMap;

extern "C" {

/// One monitored stream. Opaque; made by an init function, ended by release_handle.
typedef struct ZELHandle ZELHandle;

/// Lets the host add fields of its own to a heartbeat. `extra_fields` comes empty; a key that the report
/// already has keeps the library's value. Called on the timer thread, and on the stopping thread for the
/// ending heartbeat, once at a time for each stream. The map is the library's and valid during the call only.
/// A callback that stops its own stream sends its heartbeat by that, with what it has added until then.
typedef void (*HeartBeatCallback)(ReportMap* extra_fields);

/// As HeartBeatCallback, and shows the library's report so far.
typedef void (*HeartBeatDetailCallback)(ReportMap* extra_fields, ReportMap* report);

/// Asked at every start whether a heartbeat timer may run.
typedef bool (*HeartBeatTimerSwitchListener)(void);

/// Answers a remote boolean switch. Read afresh at each use, from any thread, also concurrently.
/// Keys: "EnableAudioAlgo" (every audio feed), "DisableEndingTimer" and "DisableFixListenerCleaning" (stop).
typedef bool (*CobaltBoolCallback)(const char* key);

/// Answers a remote integer switch. Key: "ExtraInitialHeartBeatInterval", seconds (start).
typedef int (*CobaltIntCallback)(const char* key);

/// Takes a report for the host's analytics: page "Page_zel", event_id 2101, arg1 "zel_algorithm_heartbeat",
/// arg2 and arg3 empty. `fields` is the library's and valid during the call only. Called on the timer thread
/// and on the stopping thread.
typedef void (*TlmUploadCallback)(const char* page, int event_id, const char* arg1, const char* arg2,
                                  const char* arg3, ReportMap* fields);

/// Opens a stream without a heartbeat interval: its heartbeat timer never runs.
ZEL_EXPORT ZELHandle* init_handle(void);

/// Opens a stream with a heartbeat every `interval` seconds (stored as a signed 32-bit number; below 1:
/// none).
ZEL_EXPORT ZELHandle* init_handle_with_interval(uint32_t interval);

/// Ends a handle; null is ignored. Waits for a heartbeat that is under way on another thread. It sends no
/// ending heartbeat and no final report, and leaves a timer behind that finds its stream gone at each tick:
/// call stop_zel_session first.
ZEL_EXPORT void release_handle(ZELHandle* handle);

/// Sets the heartbeat callback, replacing an earlier one. Unused while a detail callback is set.
ZEL_EXPORT void set_heart_beat_callback(ZELHandle* handle, HeartBeatCallback callback);

/// Sets the detail callback, replacing an earlier one. It takes precedence over the plain one.
ZEL_EXPORT void set_heart_beat_detail_callback(ZELHandle* handle, HeartBeatDetailCallback callback);

/// Sets the timer switch listener, replacing an earlier one. Without one no heartbeat runs. `handle` must not
/// be null: this function does not check it.
ZEL_EXPORT void set_heart_beat_timer_switch_listener(ZELHandle* handle,
                                                     HeartBeatTimerSwitchListener listener);

/// Registers the boolean switch callback for the process. The first registration wins; later ones are
/// ignored.
ZEL_EXPORT void set_cobalt_bool_callback(CobaltBoolCallback callback);

/// Registers the integer switch callback for the process. The first registration wins; later ones are
/// ignored.
ZEL_EXPORT void set_cobalt_int_callback(CobaltIntCallback callback);

/// Keeps a map of user state with the stream, replacing an earlier one. No report carries it.
ZEL_EXPORT void set_user_state_dir(ZELHandle* handle, ReportMap user_state);

/// Sets the upload callback for the process, replacing an earlier one. It holds from the next report on.
ZEL_EXPORT void set_tlm_upload_callback(TlmUploadCallback callback);

/// Starts monitoring, and the heartbeat timer if the listener agrees and the interval is at least 1. May be
/// called again after a stop. Always returns false: the result says nothing about success.
ZEL_EXPORT bool start_zel_session(ZELHandle* handle);

/// Stops monitoring: waits for a heartbeat that is under way on another thread, sends the ending heartbeat on
/// this one (if a timer ran and "DisableEndingTimer" is off), waits for the frame in work, uploads the final
/// report. Nothing of the stream is uploaded afterwards. Frames that are still queued are not examined.
ZEL_EXPORT void stop_zel_session(ZELHandle* handle);

/// Feeds one decoded audio frame; copies it and returns. Interleaved signed 16-bit samples in native
/// order. `samples` counts per channel; `bytes_per_sample` must be 2; `sample_rate` and `channels` at least
/// 1; `index` not negative. While "EnableAudioAlgo" is off the frame is ignored and the answer is true. At
/// most 50 frames wait for the detectors; the oldest is dropped beyond that. False for bad input, or a frame
/// of 2^31 bytes or more.
ZEL_EXPORT bool feed_audio_frame(ZELHandle* handle, const uint8_t* data, uint64_t samples,
                                 int32_t bytes_per_sample, int32_t sample_rate, int32_t channels,
                                 int64_t index);

/// Feeds one decoded video frame; copies it and returns. I420 in one piece without gaps: `width` x `height`
/// luma bytes, then the two chroma planes, width * height * 3 / 2 bytes in all. `index` is not negative. At
/// most 10 frames wait for the detectors; the oldest is dropped beyond that. False for bad input, or a frame
/// of 2^31 bytes or more.
ZEL_EXPORT bool feed_video_frame(ZELHandle* handle, const uint8_t* data, int32_t width, int32_t height,
                                 int64_t index);

/// Always all 64 bits set. The number that identifies a stream is the report field "zel_token". `handle` must
/// not be null: this function does not check it.
ZEL_EXPORT uint64_t get_session_id(ZELHandle* handle);

/// Adds integers to the sums that the session named by `session_id` (its "zel_token") keeps. False if no such
/// session is registered with the in-process manager, which a session opened by a handle is not by itself.
ZEL_EXPORT bool zel_collect_accumulative_data_for_session_v2(uint64_t session_id,
                                                             const std::map<std::string, int64_t>* values);

/// Appends `count` floats to the series `key` of the session named by `session_id`. False as above.
ZEL_EXPORT bool zel_collect_serial_data_for_session_v2(uint64_t session_id, const std::string* key,
                                                       const float* samples, uint64_t count);

}  // extern "C"

#endif  // ZEL_ZEL_H_
