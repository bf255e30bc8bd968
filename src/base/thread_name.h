#ifndef ZEL_SRC_BASE_THREAD_NAME_H_
#define ZEL_SRC_BASE_THREAD_NAME_H_

namespace ZEL {

/// A thread's name for debuggers and profilers, as much of it as Linux keeps. Needs no memory.
class ThreadName {
  public:
    /// printf rules.
    [[gnu::format(printf, 2, 3)]] explicit ThreadName(const char* format, ...);

    /// Names the calling thread.
    void apply() const;

  private:
    char text_[16];  // with the terminating zero
};

/// The operating system's id of the calling thread.
unsigned long threadId();

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_THREAD_NAME_H_
