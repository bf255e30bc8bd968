#ifndef ZEL_SRC_BASE_TURN_H_
#define ZEL_SRC_BASE_TURN_H_

#include <condition_variable>

namespace ZEL {

/// What one thread does at a time, with calls on the way that may lead back to it. Whoever wants its turn
/// waits for the thread that has it, but not if that thread is itself or waits, over however many turns, for
/// itself: it then goes ahead, and the thread that has the turn does not move until it is done.
class Turn {
  public:
    class Held {
      public:
        explicit Held(Turn& turn);
        ~Held();
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;

      private:
        Turn* const taken_;  ///< null if it went ahead without
    };

    Turn() = default;
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

  private:
    /// A thread, and the turn that it waits for.
    struct Visitor {
        const Turn* wanted = nullptr;
    };

    Turn* take();
    void giveBack();
    bool leadsTo(const Visitor& visitor) const;

    static thread_local Visitor this_thread;

    // Guarded by one mutex for all turns, since a circle goes through several.
    Visitor* holder_ = nullptr;
    std::condition_variable_any free_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_TURN_H_
