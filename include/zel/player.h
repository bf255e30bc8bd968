/// The in-process interface of libzel, for a player that embeds the library: the C interface, and the classes
/// behind it.
///
/// - ZELManager, the entry: message centre, registries of sessions and collectors, playback reports;
/// - ZELSession, one monitored stream, with its frames and its listener;
/// - MessageCenter and Message, through which a session publishes what it sees in each frame;
/// - ZELInfoCollector, a player's own numbers in a session's heartbeat;
/// - ZELHA, how playback has been lately, worked out from the reports;
/// - ZELAlgo::AlgoFacade, the detectors alone;
/// - EventAnalyser, time-stamped frames in, events out, and StreamClock, the time of a stream;
/// - setLogSink, where the log goes.
///
/// Needs C++20. Objects cross the boundary, so the player is built with the library's own compiler. The
/// static library holds the C interface as well; a program that linked the shared one beside it would have
/// two of everything.
#ifndef ZEL_PLAYER_H_
#define ZEL_PLAYER_H_

#include <zel/algo/algo_facade.h>
#include <zel/algo/algo_types.h>
#include <zel/base/c_object.h>
#include <zel/base/log.h>
#include <zel/collector/info_collector.h>
#include <zel/events/analyser.h>
#include <zel/events/event.h>
#include <zel/events/kinds.h>
#include <zel/events/listener.h>
#include <zel/events/stream_clock.h>
#include <zel/message/message.h>
#include <zel/message/message_center.h>
#include <zel/monitor/config_adapter.h>
#include <zel/monitor/data_monitor.h>
#include <zel/monitor/health_assessment.h>
#include <zel/monitor/manager.h>
#include <zel/monitor/metric_recorder.h>
#include <zel/session/frames.h>
#include <zel/session/session.h>
#include <zel/zel.h>

#endif  // ZEL_PLAYER_H_
