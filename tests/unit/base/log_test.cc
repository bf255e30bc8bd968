#include <string>

#include <gtest/gtest.h>

#include "base/log_format.h"
#include "support/log_capture.h"

namespace {

TEST(Log, HandsOverEachMessageWholeWhateverItsLength) {
    const support::LogCapture log;
    const std::string name(1000, 'n');
    ZEL::zel_log("ZEL: %s\n", "short");
    ZEL::zel_log("ZEL: %s %d\n", name.c_str(), 7);
    const std::string fits(255 - 5, 'f');  // exactly fills the buffer, and one more
    ZEL::zel_log("ZEL: %s", fits.c_str());
    ZEL::zel_log("ZEL: %s!", fits.c_str());
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"ZEL: short\n", "ZEL: " + name + " 7\n",
                                                        "ZEL: " + fits, "ZEL: " + fits + "!"}));
}

TEST(Log, DesktopMessagesNameFunctionAndLine) {
    const support::LogCapture log;
    ZEL_LOG_PC("ZELSessionPc::start", 149, "ZELSessionPc start!!!\n");
    ZEL_LOG_PC("f", 240, "bytes_per_sample is %d\n", 4);
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{
                  "[zel log...][function : ZELSessionPc::start][line: 149]ZELSessionPc start!!!\n",
                  "[zel log...][function : f][line: 240]bytes_per_sample is 4\n"}));
}

TEST(Log, NullRestoresStandardOutput) {
    { const support::LogCapture log; }
    testing::internal::CaptureStdout();
    ZEL::zel_log("to standard output\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "to standard output\n");
}

}  // namespace
