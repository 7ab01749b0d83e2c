#include "embedded/Gauge.h"

#include <algorithm>
#include <random>

namespace tracery::test {

using namespace Performance::CooperativeTaskManager;
using namespace std::chrono_literals;

class ServicesTest : public EmbeddedTest {
protected:
    ServicesTest()
    {
        host->setTaskClock([this] { return now; });
    }
    std::chrono::steady_clock::time_point now;
};

namespace {

class BodyTask final : public Task {
public:
    using Body = std::function<bool(OrderedTaskSession&)>;
    explicit BodyTask(Body body) : body_(std::move(body)) {}
    bool run(OrderedTaskSession& session) override { return body_(session); }

private:
    Body body_;
};

boost::shared_ptr<BodyTask> task(BodyTask::Body body)
{
    return boost::shared_ptr<BodyTask>(new BodyTask(std::move(body)));
}

} // namespace

TEST_F(ServicesTest, FeaturesKeepTheirFirstValueAndTellOfChanges)
{
    std::vector<int> told;
    const auto tell = [](int value, void* data) { static_cast<std::vector<int>*>(data)->push_back(value); };
    EXPECT_EQ(host->features().getFeature("a"), std::nullopt);
    host->setFeature("a", 3);
    host->features().registerFeature("a", 1, tell, &told);
    host->features().registerFeature("b", 1, nullptr, nullptr);
    for (const int value : {3, 4, 4, 5})
        host->setFeature("a", value);
    EXPECT_EQ(told, (std::vector<int>{4, 5}));
    EXPECT_EQ(host->features().getFeature("a"), 5);
    EXPECT_EQ(host->features().getFeature("b"), 1);
    // One that sets the feature again: those after it are told of the later value alone.
    const auto limit = [](int, void* data) { static_cast<EmbeddedHost*>(data)->setFeature("c", 0); };
    host->setFeature("c", 0);
    host->features().registerFeature("c", 0, limit, host.operator->());
    host->features().registerFeature("c", 0, tell, &told);
    host->setFeature("c", 6);
    EXPECT_EQ(told, (std::vector<int>{4, 5, 0}));
}

TEST_F(ServicesTest, TheConsoleKeepsTextUntilThereIsASinkAndFunctionsMayChangeThemselves)
{
    host->console().print("one\n");
    host->console().print("two");
    EXPECT_EQ(host->takeConsoleText(), "one\ntwo");
    std::string sunk;
    host->setConsoleSink([&](const std::string& text) {
        host->setConsoleSink(nullptr);
        sunk += text;
    });
    host->console().print("three");
    EXPECT_EQ(sunk + host->takeConsoleText(), "three");

    const auto owned = std::make_shared<double>(6);
    host->defineFunction("my.f", [this, owned](HostInputs, std::size_t) {
        host->defineFunction("my.f", nullptr);
        return outputs(number(*owned));
    });
    EXPECT_EQ(numberIn(host->functions().call("my.f", {}, 1).at(0).get()), 6);
    EXPECT_EQ(failure([&] { host->functions().call("my.f", {}, 1); }), "UnknownFunction");
    const auto lookBack = [this](void*) {
        EXPECT_EQ(failure([&] { host->functions().call("my.g", {}, 0); }), "UnknownFunction");
        host->defineFunction("my.g", nullptr);
    };
    host->defineFunction("my.g", [last = std::shared_ptr<void>(this, lookBack)](auto...) { return HostOutputs(); });
    host->defineFunction("my.g", nullptr);
}

TEST_F(ServicesTest, CommitHooksMayGoComeAndThrowWhileTheyRun)
{
    std::string calls;
    Graphics& graphics = host->graphics();
    std::unique_ptr<Graphics::HookRegistration> first, second, third, late;
    first = graphics.addCommitHook([&](int type) {
        calls += 'a' + std::to_string(type);
        first.reset();
        second.reset();
        late = graphics.addCommitHook([&](int) { calls += 'd'; });
        throw Error(errors::EmptyInput);
    });
    second = graphics.addCommitHook([&](int) { calls += 'b'; });
    third = graphics.addCommitHook([&](int) { calls += 'c'; });
    EXPECT_EQ(failure([&] { graphics.commitDatabaseUpdates(2); }), "EmptyInput");
    EXPECT_EQ(calls, "a2c");
    graphics.commitDatabaseUpdates(0);
    EXPECT_EQ(calls, "a2ccd");
    EXPECT_EQ(host->getNumberOfCommits(), 2U);
    host.reset(); // the registrations outlive it
}

TEST_F(ServicesTest, TasksRunInOrderWithinSlicesUntilTheyAreFinished)
{
    // Tasks need work of random lengths and use what is left of their slices; a naive queue tells the order.
    std::mt19937 random(2);
    std::vector<int> expected, order;
    std::chrono::microseconds total = 0us;
    const auto session = host->tasks().createOrderedSession();
    for (int i = 0; i < 50; ++i) {
        auto left = std::make_shared<std::int64_t>(random() % 700);
        total += std::chrono::microseconds(*left);
        expected.push_back(i);
        session->addTask(task([this, i, left, &order](OrderedTaskSession& own) {
            const std::int64_t step = std::min(*left, own.getMicrosecondsRemaining());
            now += std::chrono::microseconds(step);
            *left -= step;
            if (*left == 0)
                order.push_back(i);
            return *left == 0;
        }));
    }
    EXPECT_EQ(session->getMicrosecondsRemaining(), 0);
    const auto begin = now;
    int slices = 0;
    do {
        const auto sliceBegin = now;
        const bool left = host->runTasks(100us);
        ++slices;
        EXPECT_LE(now - sliceBegin, 100us);
        EXPECT_EQ(left, !session->isFinished());
    } while (!session->isFinished() && slices < 10000);
    EXPECT_EQ(order, expected);
    EXPECT_EQ(now - begin, total);
    EXPECT_FALSE(host->runTasks(-5us));
    session->addTask(task([&](OrderedTaskSession&) { return order.clear(), true; }));
    EXPECT_FALSE(host->runTasks(100us));
    EXPECT_EQ(order, std::vector<int>()) << "a finished session has got work again";
}

TEST_F(ServicesTest, SessionsTakeTurnsAndTasksMayLeaveThrowAndBeDisabled)
{
    std::string ran;
    const auto worker = [&](char name, bool finished) {
        return task([&, name, finished](OrderedTaskSession&) {
            ran += name;
            now += 10us;
            EXPECT_TRUE(host->runTasks(1s)) << "refused inside a task";
            return finished;
        });
    };
    const auto one = host->tasks().createOrderedSession();
    one->addTask(nullptr);
    const TaskPtr a = worker('a', false);
    one->addTask(a);
    TaskPtr leaving = task([&](OrderedTaskSession& own) -> bool {
        ran += 'l';
        own.removeTask(leaving);
        throw Error(errors::EmptyInput);
    });
    host->tasks().createOrderedSession()->addTask(worker('b', true)); // held by the host alone
    for (int i = 0; i < 3; ++i)
        host->runTasks(10us);
    EXPECT_EQ(ran, "aba");
    one->addTask(leaving);
    a->setEnabled(false);
    EXPECT_EQ(failure([&] { host->runTasks(1s); }), "EmptyInput");
    EXPECT_TRUE(one->isFinished());
    a->setEnabled(true);
    EXPECT_TRUE(host->runTasks(10us));
    one->removeTask(a);
    EXPECT_FALSE(host->runTasks(10us));
    EXPECT_EQ(ran, "abala");
    leaving.reset();
}

} // namespace tracery::test
