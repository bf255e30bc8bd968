#include "cli/standard_streams.h"

#include <array>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

TEST(StandardStreams, WritingWaitsForADescriptorThatDoesNot) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    const std::string text(1U << 20U, 'x');  // more than a pipe holds
    std::thread writer([&] {
        EXPECT_EQ(zel_monitor::writeAll(ends[1], text), 0);
        close(ends[1]);
    });
    std::string read_back;
    std::array<char, 4096> part{};
    for (ssize_t count = 0; (count = read(ends[0], part.data(), part.size())) > 0;) {
        read_back.append(part.data(), static_cast<size_t>(count));
    }
    writer.join();
    close(ends[0]);
    EXPECT_EQ(read_back, text);
}

}  // namespace
