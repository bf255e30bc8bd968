#ifndef ZEL_TOOLS_INPUT_FAULT_FILTERS_H_
#define ZEL_TOOLS_INPUT_FAULT_FILTERS_H_

#include <array>
#include <stdexcept>
#include <string_view>

namespace zel_monitor {

/// How good material is made faulty. The demo stream and the clips of bench/accuracy are made with these.
struct FaultFilter {
    std::string_view kind;     ///< the kind of event, by its name
    std::string_view filters;  ///< of FFmpeg; a frame's size stays if it is a multiple of 8
};

inline constexpr std::array kFaultFilters = std::to_array<FaultFilter>({
    {"black", "drawbox=t=fill:c=black"},
    {"green", "lutyuv=y=0:u=0:v=0"},
    {"block",
     "scale=iw/8:ih/8,noise=c0s=100:c0f=t,scale=8*iw:8*ih:flags=neighbor"},  // a decoder without references
    {"freeze", "loop=loop=-1:size=1"},
    {"underexposed", "lutyuv=y=16+(val-16)*0.3"},
    {"overexposed", "lutyuv=y=min(val+110\\,235)"},
    {"mute", "volume=0"},
    {"low-voice", "volume=0.05"},
    {"high-voice", "volume=40"},
});

/// Throws std::out_of_range for a kind that has none; in a constant, that does not compile.
constexpr const FaultFilter& faultFilter(std::string_view kind) {
    for (const FaultFilter& fault : kFaultFilters) {
        if (fault.kind == kind) {
            return fault;
        }
    }
    throw std::out_of_range("no such fault filter");
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_FAULT_FILTERS_H_
