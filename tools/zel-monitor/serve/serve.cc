#include "serve/serve.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <system_error>
#include <thread>
#include <utility>

#include "cli/exit_status.h"
#include "cli/log_file.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "serve/config.h"
#include "serve/service.h"

namespace zel_monitor {
namespace {

constexpr std::chrono::milliseconds kTick{100};

/// The configuration with what the command line says in its place.
ServeSettings settingsFor(const ServeOptions& options) {
    ServeSettings settings = readConfig(options.config);
    settings.listen = options.listen.value_or(settings.listen);
    settings.events = options.events.value_or(settings.events);
    auto& streams = settings.streams;
    streams.erase(std::remove_if(streams.begin(), streams.end(),
                                 [&](const StreamSettings& s) { return !options.shard.takes(s.name); }),
                  streams.end());
    return settings;
}

void tellStart(const Service& service, size_t streams) {
    complain(fmt::format("monitoring {} stream{}{}", streams, streams == 1 ? "" : "s",
                         service.port() > 0 ? fmt::format(", HTTP on port {}", service.port()) : ""));
}

/// Takes on a changed configuration, or says why not and goes on with the one before.
void reload(Service& service, const ServeOptions& options) {
    try {
        const ServeSettings settings = settingsFor(options);
        service.configure(settings);
        tellStart(service, settings.streams.size());
    } catch (const ConfigError& error) {
        writeError(error.what());
        complain("the configuration is not taken on; the one before stays in force");
    } catch (const std::runtime_error& error) {
        complain(fmt::format("{}; the configuration before stays in force", error.what()));
    }
    service.reopen();
    reopenLogs();
}

int serve(const ServeOptions& options, const ServeSettings& settings) {
    const std::atomic<bool>& stop = watchStopSignals();
    const std::atomic<unsigned>& hangups = watchHangups();
    Service service;
    try {
        service.configure(settings);
    } catch (const std::runtime_error& error) {
        complain(error.what());
        return kExitFailed;
    }
    tellStart(service, settings.streams.size());
    unsigned heeded = 0;
    while (!stop.load()) {
        if (const unsigned now = hangups.load(); std::exchange(heeded, now) != now) {
            reload(service, options);
        }
        service.tick();
        if (const int error = service.outputError(); error != 0) {
            throw OutputError(error, "standard output");
        }
        std::this_thread::sleep_for(kTick);
    }
    return kExitDone;
}

}  // namespace

int runServe(const ServeOptions& options) {
    ServeSettings settings;
    try {
        settings = settingsFor(options);
        if (options.check) {
            writeOutput(fmt::format("{}: {} stream{}, no mistakes\n", options.config, settings.streams.size(),
                                    settings.streams.size() == 1 ? "" : "s"));
            return kExitDone;
        }
        redirectLogs(options.log_file);
    } catch (const ConfigError& error) {
        writeError(error.what());
        return kExitUsage;
    } catch (const OutputError&) {
        throw;
    } catch (const std::system_error& error) {
        complain(error.what());
        return kExitUsage;
    }
    const int status = serve(options, settings);
    requireLogs();
    return status;
}

}  // namespace zel_monitor
