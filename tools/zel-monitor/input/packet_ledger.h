#ifndef ZEL_TOOLS_INPUT_PACKET_LEDGER_H_
#define ZEL_TOOLS_INPUT_PACKET_LEDGER_H_

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "input/complaint.h"
#include "input/container/library_log.h"
#include "input/stream_facts.h"

namespace zel_monitor {

/// Keeps what is wrong with the packets of a track while they are in its decoder, until the frames come out
/// that were made of them, or it is clear that none will. So complaints have the times of their frames,
/// whichever thread of the decoder makes them, and whenever.
class PacketLedger : public LogListener {
  public:
    explicit PacketLedger(StreamNature nature) : nature_(nature) {}

    /// The next packet goes to the decoder, and perhaps needs no other. Gives its number, which the decoder's
    /// `reordered_opaque` is to be.
    int64_t send(double time_s, double length_s, bool is_key);
    /// Something is wrong with the packet that was sent last.
    void complain(ComplaintReason reason) { onLogged(reason, sent_, 1.0); }
    /// The decoder refused a packet, and nobody knows which of the last ones.
    void refused();
    void onLogged(ComplaintReason reason, int64_t packet, double share) override;

    /// A frame came out that was made of the packet `number`, and that the decoder perhaps marked as damaged.
    /// Gives what is wrong with it, and with what should have come out before.
    std::vector<ItemComplaint> receive(int64_t number, double time_s, double length_s, bool is_marked);
    /// No more frames come. Gives the rest, seen from where the last one ended.
    std::vector<ItemComplaint> finish();
    /// How many packets went to the decoder after the one that the last frame was made of.
    int64_t unanswered() const { return sent_ - received_; }
    /// Whether the decoder has run into anything that it may make this or that of. If a frame comes out and
    /// it has not, neither has it with anything that the frame is made of.
    bool isDisturbed();

  private:
    struct Packet {
        double time_s = 0.0;
        double length_s = 0.0;
        std::map<ComplaintReason, double> complaints = {};  // with the share that is hit
    };

    void forgiveBeginning();
    bool leads(int64_t number, const Packet& packet) const;
    std::vector<ItemComplaint> lostUpTo(int64_t number, double seen_from_s);

    StreamNature nature_;
    std::mutex mutex_;
    std::map<int64_t, Packet> packets_;  // by number; guarded by mutex_, as decoders complain on any thread
    int64_t sent_ = 0;
    int64_t received_ = 0;  // the highest number of a packet that a frame was made of
    uint64_t refusals_ = 0;
    std::optional<double> first_s_ = {};  // when the first frame began
    int64_t first_ = 0;                   // and the number of its packet
    double end_s_ = 0.0;                  // of the last frame
    double last_s_ = 0.0;                 // time of the packet that was sent last
    bool adrift_ = false;                 // times of packets have jumped back, and no frame told where to
    bool disturbed_ = false;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_PACKET_LEDGER_H_
