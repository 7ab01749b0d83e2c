#include <tracery/DrawScheduler.h>
#include <tracery/OneShotTimer.h>

#include <algorithm>
#include <iostream>
#include <utility>

namespace tracery {

std::unique_ptr<DrawScheduler> DrawScheduler::mpInstance;
double DrawScheduler::timeInterval = kDefaultInterval;

DrawScheduler* DrawScheduler::getInstance()
{
    if (mpInstance == nullptr)
        mpInstance = std::make_unique<DrawScheduler>(std::make_unique<OneShotTimer>());
    return mpInstance.get();
}

void DrawScheduler::shutDown()
{
    if (mpInstance == nullptr)
        return;
    mpInstance->Clear();
    mpInstance->timer_->stop();
}

DrawScheduler::DrawScheduler(std::unique_ptr<Timer> timer, Clock clock)
    : timer_(std::move(timer)), clock_(std::move(clock)), drawStart_(clock_())
{}

DrawScheduler::~DrawScheduler()
{
    commitHook_.reset();
    timer_->stop();
    const auto dropped = std::exchange(tasks_, {}); // what goes with them may look here
}

void DrawScheduler::Init() { Init(getTimeInterval(), 0.5); }

void DrawScheduler::Init(double intervalSeconds, double second)
{
    listenToCommits(); // first, as this alone can fail
    second_ = second;
    drawCount_ = 0;
    inCallback_ = false;
    commitPending_ = true;
    intervalMicroseconds_ = intervalSeconds * 1e6;
    timer_->setTimeout(intervalSeconds);
    timer_->start();
}

void DrawScheduler::listenToCommits()
{
    Host* host = Host::current();
    const Host* listened = getCommitHost();
    if (listened != nullptr && (host == nullptr || host == listened))
        return;
    auto hook = host != nullptr ? host->graphics().addCommitHook([this](int type) { CDUHook(type); }) : nullptr;
    commitHook_.swap(hook);
    commitHost_ = host != nullptr ? host->watch() : std::weak_ptr<Host>();
}

void DrawScheduler::Clear()
{
    drawCount_ = 0;
    commitHook_.reset();
}

std::size_t DrawScheduler::Bind(DrawSchedulerTask task)
{
    tasks_.push_back(std::make_shared<DrawSchedulerTask>(std::move(task)));
    return tasks_.size() - 1;
}

void DrawScheduler::Unbind(std::size_t id)
{
    if (id >= tasks_.size())
        return;
    const auto dropped = std::exchange(tasks_[id], nullptr); // what goes with it may look here
    if (std::ranges::any_of(tasks_, [](const auto& task) { return task != nullptr && task->enabled(); }))
        return;
    tasks_.clear();
    roundSize_ = 0; // ids begin anew: those given from now on are not of the running round
    Clear();
}

void DrawScheduler::TaskComplete(bool force)
{
    if (inCallback_) {
        std::cout << "DrawScheduler callback re-entry " << std::endl;
        return;
    }
    const bool timeUp = timer_->isTimeUp();
    if (!timeUp && !force)
        return;
    if (force || commitPending_ || lineHasData_)
        drawRound();
    else
        timer_->start();
}

void DrawScheduler::drawRound()
{
    // A task that calls Init ends the protection against rounds within its round.
    const auto finish = [this, outer = roundSize_] {
        roundSize_ = std::min(outer, roundSize_);
        inCallback_ = false;
        timer_->start();
    };
    lineHasData_ = false;
    inCallback_ = true;
    ++drawCount_;
    roundSize_ = tasks_.size();
    try {
        DrawTic();
        for (std::size_t id = 0; id < roundSize_; ++id)
            if (const auto task = tasks_[id]) // held: it may unbind itself
                task->PrepareForDraw();
        Host* listened = getCommitHost();
        if (Host* host = listened != nullptr ? listened : Host::current())
            host->graphics().commitDatabaseUpdates(0);
    } catch (...) {
        finish();
        throw;
    }
    finish();
}

void DrawScheduler::DrawTic() { drawStart_ = clock_(); }

double DrawScheduler::DrawToc() const { return static_cast<double>((clock_() - drawStart_).count()); }

} // namespace tracery
