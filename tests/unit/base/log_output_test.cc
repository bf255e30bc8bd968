#include "base/log_output.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "base/write_at_once.h"

namespace {

using ZEL::LogOutput;

constexpr char kLine[] = "a line of the log\n";

/// Two descriptors of which one is read and the other written.
struct Channel {
    int reader = -1;
    int writer = -1;

    Channel() = default;
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    ~Channel() {
        closeReader();
        close(writer);
    }
    void closeReader() {
        if (reader >= 0) {
            close(std::exchange(reader, -1));
        }
    }
    /// What has come in so far.
    std::string read() const {
        std::string text;
        std::array<char, 4096> part{};
        pollfd question{reader, POLLIN, 0};
        while (poll(&question, 1, 0) == 1 && (question.revents & POLLIN) != 0) {
            const ssize_t bytes = ::read(reader, part.data(), part.size());
            if (bytes <= 0) {
                break;
            }
            text.append(part.data(), static_cast<size_t>(bytes));
        }
        return text;
    }
};

void openPipe(Channel& channel) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    channel.reader = ends[0];
    channel.writer = ends[1];
}
void openSocket(Channel& channel) {
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    channel.reader = ends[0];
    channel.writer = ends[1];
}
void openTerminal(Channel& channel) {
    channel.reader = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(channel.reader), 0);
    ASSERT_EQ(unlockpt(channel.reader), 0);
    channel.writer = open(ptsname(channel.reader), O_WRONLY | O_NOCTTY);
    ASSERT_GE(channel.writer, 0);
}

class LogOutputTo : public testing::TestWithParam<void (*)(Channel&)> {};

size_t countOf(const std::string& part, const std::string& text) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST_P(LogOutputTo, SomebodyWhoDoesNotReadDropsLinesAndTellsHowMany) {
    Channel channel;
    GetParam()(channel);
    const int flags = fcntl(channel.writer, F_GETFL);
    LogOutput output = LogOutput::toDescriptor(channel.writer);
    constexpr size_t kWritten = 30'000;  // more than any of them holds
    for (size_t i = 0; i < kWritten; ++i) {
        output.write(kLine);
    }
    std::string taken = channel.read();
    size_t written = kWritten;
    while (taken.find("dropped") == std::string::npos) {
        output.write(kLine);
        ++written;
        taken += channel.read();
    }
    const size_t notice = taken.find("ZEL: WARN: ");
    const size_t told = countOf("a line of the log", taken) + std::stoul(taken.substr(notice + 11));
    EXPECT_GE(told, written);
    EXPECT_LE(told, written + 1);  // a line that lacks no more than its end counts as dropped
    EXPECT_EQ(taken.at(notice - 1), '\n');
    output.write(kLine);
    EXPECT_EQ(channel.read().find("dropped"), std::string::npos) << "it was told already";
    EXPECT_EQ(fcntl(channel.writer, F_GETFL), flags);  // which others may share
}

TEST_P(LogOutputTo, SomebodyWhoIsGoneRaisesNoSignal) {
    Channel channel;
    GetParam()(channel);
    LogOutput output = LogOutput::toDescriptor(channel.writer);
    channel.closeReader();
    errno = ENOENT;
    output.write(kLine);
    EXPECT_EQ(errno, ENOENT);

    sigset_t pipe_signal;  // nor leaves one behind for a thread that blocks it
    sigemptyset(&pipe_signal);
    sigaddset(&pipe_signal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_signal, nullptr);
    LogOutput::toDescriptor(channel.writer).write(kLine);
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
    pthread_sigmask(SIG_UNBLOCK, &pipe_signal, nullptr);
}

INSTANTIATE_TEST_SUITE_P(, LogOutputTo, testing::Values(&openPipe, &openSocket, &openTerminal),
                         [](const auto& tested) {
                             return std::string(std::array{"Pipe", "Socket", "Terminal"}.at(tested.index));
                         });

TEST(LogOutput, LineThatBreaksOffIsEndedBeforeTheNextOne) {
    Channel channel;
    openPipe(channel);
    LogOutput output = LogOutput::toDescriptor(channel.writer);
    output.write(std::string(1'000'000, 'x') + "\n");  // more than a pipe holds
    std::string taken = channel.read();
    EXPECT_EQ(taken, std::string(taken.size(), 'x'));
    for (taken.clear(); taken.empty(); taken = channel.read()) {
        output.write(kLine);
    }
    EXPECT_EQ(taken.find("\nZEL: WARN: "), 0U) << taken;
}

TEST(LogOutput, LeavesTheSignalsThatItsHostHoldsBack) {
    Channel channel;
    openPipe(channel);
    channel.closeReader();
    sigset_t pipe_signal;
    sigemptyset(&pipe_signal);
    sigaddset(&pipe_signal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_signal, nullptr);
    pthread_kill(pthread_self(), SIGPIPE);
    LogOutput::toDescriptor(channel.writer).write(kLine);
    const timespec now{};
    EXPECT_EQ(sigtimedwait(&pipe_signal, nullptr, &now), SIGPIPE);
    pthread_sigmask(SIG_UNBLOCK, &pipe_signal, nullptr);
}

TEST(LogOutput, TakesNoStandardDescriptorThatItsHostHasClosed) {
    const int kept = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    LogOutput::chosenBy((testing::TempDir() + "zel_log_output_low").c_str()).write(kLine);
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
    dup2(kept, STDIN_FILENO);
    close(kept);
}

TEST(LogOutput, KeepsItsPlaceAmongWhatTheHostPrints) {
    Channel channel;
    openPipe(channel);
    std::FILE* const files[] = {fdopen(dup(channel.writer), "w"), std::tmpfile()};
    for (std::FILE* const stream : files) {
        LogOutput output = LogOutput::toStream(stream);
        std::fputs("host, ", stream);
        output.write("library, ");
        std::fputs("host", stream);
        std::fflush(stream);
    }
    EXPECT_EQ(channel.read(), "host, library, host");
    std::array<char, 64> text{};
    std::rewind(files[1]);
    EXPECT_STREQ(std::fgets(text.data(), text.size(), files[1]), "host, library, host");
    std::fclose(files[0]);
    std::fclose(files[1]);
}

TEST(LogOutput, LeavesNothingInAStreamThatItsHostWouldHaveToWaitFor) {
    Channel channel;
    openPipe(channel);
    std::FILE* const stream = fdopen(dup(channel.writer), "w");
    LogOutput output = LogOutput::toStream(stream);
    for (int i = 0; i < 10'000; ++i) {
        output.write(kLine);
    }
    EXPECT_EQ(std::fclose(stream), 0);  // would hang if there were something left to write

    std::FILE* const another = fdopen(dup(channel.writer), "w");
    LogOutput to_another = LogOutput::toStream(another);
    std::fputs("host", another);  // held back by the stream
    to_another.write(kLine);      // may not overtake it, and may not wait for it
    EXPECT_EQ(channel.read().find("host"), std::string::npos);
    EXPECT_EQ(std::fclose(another), 0);
    EXPECT_EQ(channel.read(), "host");
}

TEST(LogOutput, GoesWhereItIsSent) {
    const std::string path = testing::TempDir() + "zel_log_output";
    std::remove(path.c_str());
    for (int run = 0; run < 2; ++run) {  // the second one appends
        LogOutput::chosenBy(path.c_str()).write(kLine);
    }
    std::FILE* const file = std::fopen(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    std::array<char, 64> text{};
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), 2 * (sizeof kLine - 1));
    std::fclose(file);

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    LogOutput::chosenBy(nullptr).write("1\n");
    LogOutput::chosenBy("").write("2\n");
    LogOutput::chosenBy("stdout").write("3\n");
    LogOutput::chosenBy("stderr").write("error\n");
    LogOutput::chosenBy("off").write("nowhere\n");
    LogOutput::chosenBy("/nowhere/log").write("4\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "1\n2\n3\nZEL: WARN: cannot write the log to /nowhere/log: No such file or directory\n4\n");
}

TEST(LogOutput, TakesAFullDiskAndAClosedDescriptorForNobodyReading) {
    const int full = open("/dev/full", O_WRONLY);
    LogOutput output = LogOutput::toDescriptor(full);
    output.write(kLine);
    close(full);
    output.write(kLine);
}

TEST(WriteAtOnce, AsksForRoomWhereItCanDoNoBetter) {
    // Can neither be told not to wait nor be opened again; takes numbers up to 2^64 - 2.
    const int counter = eventfd(0, EFD_CLOEXEC);
    std::array<uint64_t, 1> number{7};
    const iovec piece{number.data(), sizeof number};
    EXPECT_EQ(ZEL::writeAtOnce(counter, ZEL::Receiver::kOther, {&piece, 1}), 8);
    EXPECT_EQ(read(counter, number.data(), sizeof number), 8);
    EXPECT_EQ(number[0], 7U);
    number[0] = 0xFFFF'FFFF'FFFF'FFFE;
    EXPECT_EQ(ZEL::writeAtOnce(counter, ZEL::Receiver::kOther, {&piece, 1}), 8);
    EXPECT_EQ(ZEL::writeAtOnce(counter, ZEL::Receiver::kOther, {&piece, 1}), -1);  // would wait
    close(counter);
}

}  // namespace
