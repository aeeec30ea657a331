#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"

namespace ycontacts {
namespace {

using Heard = std::vector<std::string>;

class Greeting {
public:
    virtual ~Greeting() = default;
    virtual void greet(const std::string& text) = 0;
};

class Farewell {
public:
    virtual ~Farewell() = default;
    virtual void leave() = 0;
};

// Implements both contracts; Farewell sits at a non-zero offset, so a wrong pointer cast would show.
class Listener : public Greeting, public Farewell {
public:
    Listener(std::string name, Heard& heard) : name_(std::move(name)), heard_(heard) {}
    void greet(const std::string& text) override { heard_.push_back(name_ + " greeted " + text); }
    void leave() override { heard_.push_back(name_ + " left"); }

private:
    std::string name_;
    Heard& heard_;
};

void greetAll(YNotificationCenter& center, const std::string& text) {
    center.post<Greeting>([&](Greeting& observer) { observer.greet(text); });
}

TEST(YNotificationCenterTest, PostReachesLiveRegisteredObserversOfItsContractInRegistrationOrder) {
    YNotificationCenter center;
    Heard heard;
    auto first = std::make_shared<Listener>("first", heard);
    auto second = std::make_shared<Listener>("second", heard);
    auto leaving = std::make_shared<Listener>("leaving", heard);
    auto released = std::make_shared<Listener>("released", heard);
    auto removed = std::make_shared<Listener>("removed", heard);
    for (const auto& listener : {second, first, second, released, removed}) center.addObserver<Greeting>(listener);
    center.addObserver<Farewell>(leaving);
    center.addObserver<Greeting>(std::shared_ptr<Greeting>());

    released.reset();
    center.removeObserver<Greeting>(removed.get());
    // Removing under another contract leaves the Greeting registration in place.
    center.removeObserver<Farewell>(first.get());
    greetAll(center, "hi");
    center.post<Farewell>([](Farewell& observer) { observer.leave(); });
    center.post<Farewell>({});

    EXPECT_EQ(heard, (Heard{"second greeted hi", "first greeted hi", "leaving left"}));
    EXPECT_EQ(center.observerCount<Greeting>(), 2u);
    EXPECT_EQ(center.observerCount<Farewell>(), 1u);
}

// Reacts to a greeting by posting, registering and unregistering on the same centre.
class Reentrant : public Greeting {
public:
    Reentrant(YNotificationCenter& center, std::shared_ptr<Listener> newcomer)
        : center_(center), newcomer_(std::move(newcomer)) {}
    void greet(const std::string& text) override {
        ++calls;
        center_.post<Farewell>([](Farewell& observer) { observer.leave(); });
        center_.addObserver<Greeting>(newcomer_);
        center_.removeObserver<Greeting>(this);
        if (text == "first") greetAll(center_, "nested");
    }
    int calls = 0;

private:
    YNotificationCenter& center_;
    std::shared_ptr<Listener> newcomer_;
};

TEST(YNotificationCenterTest, ObserversMayUseTheCentreFromInsideANotification) {
    YNotificationCenter center;
    Heard heard;
    auto leaving = std::make_shared<Listener>("leaving", heard);
    auto reentrant = std::make_shared<Reentrant>(center, std::make_shared<Listener>("newcomer", heard));
    center.addObserver<Farewell>(leaving);
    center.addObserver<Greeting>(reentrant);

    greetAll(center, "first");
    greetAll(center, "second");

    // The nested post already sees the newcomer and no longer the reentrant observer.
    EXPECT_EQ(reentrant->calls, 1);
    EXPECT_EQ(heard, (Heard{"leaving left", "newcomer greeted nested", "newcomer greeted second"}));
}

TEST(YNotificationCenterTest, ConcurrentRegistrationsAndPostsReachEachLiveObserver) {
    YNotificationCenter center;
    std::atomic<int> missed{0};
    std::vector<std::thread> workers;
    for (int thread = 0; thread < 4; ++thread) {
        workers.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                Heard heard;
                auto listener = std::make_shared<Listener>("worker", heard);
                center.addObserver<Greeting>(listener);
                // Other workers' listeners write to their own lists, under their own posts only.
                center.post<Greeting>([&](Greeting& observer) {
                    if (&observer == static_cast<Greeting*>(listener.get())) observer.greet("self");
                });
                if (heard.size() != 1) ++missed;
                if (round % 2 == 0) center.removeObserver<Greeting>(listener.get());
            }
        });
    }
    for (auto& worker : workers) worker.join();
    EXPECT_EQ(missed.load(), 0);
    EXPECT_EQ(center.observerCount<Greeting>(), 0u);
}

}  // namespace
}  // namespace ycontacts
