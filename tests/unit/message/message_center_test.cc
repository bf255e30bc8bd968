#include <zel/message/message_center.h>

#include <future>
#include <numeric>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "support/allocations.h"
#include "support/log_capture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ZEL::CObject;
using ZEL::Message;
using ZEL::MessageCenter;

struct Owner : CObject {};

std::shared_ptr<Message> message(const std::string& name, ReportMap payload = {}) {
    return std::make_shared<Message>(name, std::move(payload));
}

/// A centre that a test may leave at any point, and what reached its callbacks.
class MessageCenterTest : public testing::Test {
  protected:
    ~MessageCenterTest() override { center.stop(); }

    /// Waits until everything published so far, and what its callbacks sent on, is delivered.
    void drain() {
        std::promise<void> reached;
        const auto marker = std::make_shared<Owner>();
        center.registerListener("marker", marker, [&](const auto&) { reached.set_value(); });
        center.publish(message("marker"));
        reached.get_future().wait();
        center.unregisterListener("marker", marker);
        center.publish(message("nobody listens"));  // waits for the rest of the marker's walk
    }

    MessageCenter::Callback note(const std::string& text) {
        return [this, text](const std::shared_ptr<Message>& received) {
            heard.push_back(text + ":" + received->name());
        };
    }

    MessageCenter center;
    const std::shared_ptr<Owner> owner = std::make_shared<Owner>();
    const std::shared_ptr<Owner> other = std::make_shared<Owner>();
    std::vector<std::string> heard;  // written on the delivery thread, read after drain()
};

TEST(Message, HoldsItsTargetAndRefusesOneThatIsGone) {
    auto target = std::make_shared<Owner>();
    const std::weak_ptr<CObject> weak = target;
    {
        const Message held("m", {{"k", "v"}}, weak);
        EXPECT_EQ(held.target(), target);
        EXPECT_EQ(held.payload(), (ReportMap{{"k", "v"}}));
        target.reset();
        EXPECT_FALSE(weak.expired());
    }
    EXPECT_THROW(Message("m", {}, weak), std::bad_weak_ptr);
    EXPECT_EQ(Message("m").target(), nullptr);
}

TEST_F(MessageCenterTest, DeliversInPublishOrderOnItsOwnThread) {
    std::string thread_name(16, '\0');
    center.registerListener("a", owner, note("first"));
    center.registerListener("b", owner, note("first"));
    center.registerListener("a", other, [&](const auto& received) {
        heard.push_back("second:" + received->name());
        pthread_getname_np(pthread_self(), thread_name.data(), thread_name.size());
    });
    center.publish(message("a"));
    center.publish(message("nobody listens"));
    center.publish(message("b"));
    center.publish(message("a"));
    drain();
    EXPECT_THAT(heard, ElementsAre("first:a", "second:a", "first:b", "first:a", "second:a"));
    EXPECT_STREQ(thread_name.c_str(), "MPMessageCenter");
}

TEST_F(MessageCenterTest, GivesThePayloadToTheFirstListenerAndEachItsOwner) {
    std::vector<std::pair<ReportMap, std::shared_ptr<CObject>>> received;
    const auto keep = [&](const auto& m) { received.emplace_back(m->payload(), m->target()); };
    center.registerListener("a", owner, keep);
    center.registerListener("a", other, keep);
    const auto sent = message("a", {{"k", "v"}});
    center.publish(sent);
    drain();
    EXPECT_THAT(received, ElementsAre(std::pair(ReportMap{{"k", "v"}}, std::shared_ptr<CObject>(owner)),
                                      std::pair(ReportMap{}, std::shared_ptr<CObject>(other))));
    EXPECT_EQ(sent->target(), nullptr);
    EXPECT_THAT(sent->payload(), IsEmpty());
}

TEST_F(MessageCenterTest, KeepsOneSubscriptionPerOwnerAndName) {
    const support::LogCapture log;
    center.registerListenerLogged("a", owner, note("first"));
    center.registerListenerLogged("a", owner, note("second"));
    center.registerListener("b", owner, note("third"));
    center.registerListenerLogged("", owner, note("unnamed"));
    center.registerListenerLogged("a", nullptr, note("unowned"));
    center.registerListenerLogged("a", other, nullptr);
    center.publish(message("a"));
    center.publish(message("b"));
    drain();
    EXPECT_THAT(heard, ElementsAre("first:a", "third:b"));
    EXPECT_THAT(log.messages(), ElementsAre("registerListener a"));
}

TEST_F(MessageCenterTest, UnregistersByNameAndOwnerAndAlwaysAnswersMinusOne) {
    center.registerListener("a", owner, note("first"));
    center.registerListener("a", other, note("second"));
    center.registerListener("b", owner, note("third"));
    EXPECT_EQ(center.unregisterListener("a", owner), -1);
    EXPECT_EQ(center.unregisterListener("a", owner), -1);
    EXPECT_EQ(center.unregisterListener("", owner), -1);
    EXPECT_EQ(center.unregisterListener("nobody listens", owner), -1);
    center.publish(message("a"));
    center.publish(message("b"));
    drain();
    EXPECT_THAT(heard, ElementsAre("second:a", "third:b"));
}

TEST_F(MessageCenterTest, OwnsItsListenersOnlyWhileTheyAreRegistered) {
    auto held = std::make_shared<Owner>();
    const std::weak_ptr<Owner> weak = held;
    center.registerListener("a", held, note("first"));
    EXPECT_EQ(weak.use_count(), 2);
    center.unregisterListener("a", held);
    EXPECT_EQ(weak.use_count(), 1);
    center.registerListener("a", std::move(held), note("first"));
    EXPECT_FALSE(weak.expired());
    center.stop();
    EXPECT_TRUE(weak.expired());
}

TEST_F(MessageCenterTest, DeliversInTheSameGoWhatACallbackReceives) {
    const support::LogCapture log;
    center.registerListener("a", owner, [&](const auto& received) {
        heard.push_back("a:" + received->payload().at("k"));
        center.receiveNoLock(nullptr);
        center.receiveNoLock(message(""));
        center.receiveNoLock(message("b", {{"k", "from a"}}));
    });
    center.registerListener(
        "b", owner, [&](const auto& received) { heard.push_back("b:" + received->payload().at("k")); });
    center.publish(message("a", {{"k", "published"}}));
    drain();
    EXPECT_THAT(heard, ElementsAre("a:published", "b:from a"));
    EXPECT_THAT(log.messages(),
                ElementsAre("[MessageCenter] receiveNoLock: ", "[MessageCenter] receiveNoLock: ",
                            "[MessageCenter] receiveNoLock: b"));
}

TEST_F(MessageCenterTest, DropsWhatItHasNoMemoryToDeliverAndGoesOn) {
    static support::Count lost;
    ZEL::setLogSink([](const char*, size_t, void*) { lost.add(); }, nullptr);
    center.registerListener("a", owner, note("first"));
    {
        const auto sent = message("a");
        const support::NoMemoryElsewhere no_memory;
        center.publish(sent);
        ASSERT_TRUE(lost.waitFor(1));
    }
    ZEL::setLogSink(nullptr, nullptr);
    center.publish(message("a"));
    drain();
    EXPECT_THAT(heard, ElementsAre("first:a"));
}

TEST_F(MessageCenterTest, IgnoresMessagesWithoutAName) {
    center.registerListener("a", owner, note("first"));
    center.publish(nullptr);
    center.publish(message(""));
    drain();
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(MessageCenterTest, StartsEachDeliveryFromTheCallbackAsRegistered) {
    center.registerListener(
        "a", owner, [this, calls = 0](const auto&) mutable { heard.push_back(std::to_string(++calls)); });
    center.publish(message("a"));
    center.publish(message("a"));
    drain();
    EXPECT_THAT(heard, ElementsAre("1", "1"));
}

/// Runs on the delivery thread: returns once another thread's stop() has begun, which shows in that messages
/// are no longer kept.
void awaitStop(MessageCenter& center) {
    const auto probe = message("a");
    while (true) {
        const auto kept = probe.use_count();
        center.receiveNoLock(probe);
        if (probe.use_count() == kept) {
            return;
        }
        std::this_thread::yield();
    }
}

TEST_F(MessageCenterTest, StopWaitsForTheCallbackAndDropsTheRest) {
    const support::LogCapture log;
    support::Count entered;
    center.registerListener("a", owner, [&](const auto& received) {
        center.receiveNoLock(message("a"));  // would be next
        entered.add();
        awaitStop(center);
        heard.push_back(received->name());
    });
    const auto left = message("a");
    center.publish(message("a"));
    ASSERT_TRUE(entered.waitFor(1));
    center.stop();
    center.publish(left);
    center.receiveNoLock(left);
    center.stop();
    EXPECT_THAT(heard, ElementsAre("a"));
    EXPECT_EQ(left.use_count(), 1);
    EXPECT_EQ(owner.use_count(), 1);
}

TEST_F(MessageCenterTest, NoticesThatItIsStoppedOnlyAtANamesSecondListener) {
    center.stop();
    center.registerListener("a", owner, note("first"));
    center.registerListener("a", other, note("second"));
    EXPECT_EQ(owner.use_count(), 2);
    EXPECT_EQ(other.use_count(), 1);
}

TEST_F(MessageCenterTest, StopOnTheDeliveryThreadEndsDeliveryButCannotWait) {
    std::promise<std::error_code> refused;
    center.registerListener("a", owner, [&](const auto& received) {
        heard.push_back(received->name());
        try {
            center.stop();
        } catch (const std::system_error& error) {
            refused.set_value(error.code());
        }
    });
    center.publish(message("a"));
    EXPECT_EQ(refused.get_future().get(), std::errc::resource_deadlock_would_occur);
    center.publish(message("a"));
    center.stop();
    EXPECT_THAT(heard, ElementsAre("a"));
    EXPECT_EQ(owner.use_count(), 1);
}

TEST_F(MessageCenterTest, LetsOwnersCallTheCentreWhileItStops) {
    struct Leaving : CObject {
        explicit Leaving(MessageCenter& c) : center(c) {}
        ~Leaving() override { center.unregisterListener("a", nullptr); }
        MessageCenter& center;
    };
    center.registerListener("a", std::make_shared<Leaving>(center), note("first"));
    center.stop();
    center.stop();
}

TEST_F(MessageCenterTest, LetsATargetCallTheCentreAsItsLastMessageDies) {
    struct Leaving : CObject {
        explicit Leaving(MessageCenter& c) : center(c) {}
        ~Leaving() override { center.publish(message("left")); }
        MessageCenter& center;
    };
    std::promise<void> left;
    center.registerListener("left", owner, [&](const auto&) { left.set_value(); });
    auto last_owner = std::make_shared<Message>("about", ReportMap{}, std::make_shared<Leaving>(center));
    center.publish(std::move(last_owner));
    left.get_future().wait();
}

TEST_F(MessageCenterTest, LosesNothingWhileManyThreadsPublishAndSubscribe) {
    constexpr size_t kPublishers = 3;
    constexpr int kEach = 2000;
    std::vector<std::vector<int>> received(kPublishers);
    for (size_t p = 0; p < kPublishers; ++p) {
        center.registerListener(std::to_string(p), owner, [&, p](const auto& m) {
            received[p].push_back(std::stoi(m->payload().at("n")));
        });
    }
    std::vector<std::thread> threads;
    for (size_t p = 0; p < kPublishers; ++p) {
        threads.emplace_back([&, p] {
            for (int n = 0; n < kEach; ++n) {
                center.publish(message(std::to_string(p), {{"n", std::to_string(n)}}));
            }
        });
    }
    threads.emplace_back([&] {
        for (int n = 0; n < kEach; ++n) {
            center.registerListener("0", other, [](const auto&) {});
            center.unregisterListener("0", other);
        }
    });
    for (std::thread& thread : threads) {
        thread.join();
    }
    drain();
    std::vector<int> want(kEach);
    std::iota(want.begin(), want.end(), 0);
    EXPECT_THAT(received, testing::Each(want));
}

TEST_F(MessageCenterTest, StopsAgainOnAnyOtherThread) {
    // The system may give a new thread the number that the delivery thread had.
    for (int i = 0; i < 20; ++i) {
        center.stop();
        std::thread([this] { EXPECT_NO_THROW(center.stop()); }).join();
    }
}

TEST_F(MessageCenterTest, LetsWhatACallbackHoldsCallTheCentreAsItDies) {
    struct Caller {
        explicit Caller(MessageCenter& called) : center(called) {}
        ~Caller() { center.unregisterListener("another", std::make_shared<Owner>()); }
        MessageCenter& center;
    };
    center.registerListener("name", owner, [caller = std::make_shared<Caller>(center)](const auto&) {});
    EXPECT_EQ(center.unregisterListener("name", owner), -1);
}

}  // namespace
