#include "CommitHooks.h"

#include <exception>
#include <utility>

namespace tracery::embedded {

class CommitHooks::Registration final : public HookRegistration {
public:
    Registration(const std::shared_ptr<Entries>& entries, std::shared_ptr<Entry> entry)
        : entries_(entries), entry_(std::move(entry))
    {}
    ~Registration() override
    {
        entry_->removed = true;
        if (const auto entries = entries_.lock())
            std::erase(*entries, entry_);
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    std::weak_ptr<Entries> entries_;
    std::shared_ptr<Entry> entry_;
};

std::unique_ptr<Graphics::HookRegistration> CommitHooks::addCommitHook(CommitHook hook)
{
    const auto entry = std::make_shared<Entry>(Entry{std::move(hook)});
    auto registration = std::make_unique<Registration>(entries_, entry);
    entries_->push_back(entry);
    return registration;
}

void CommitHooks::commitDatabaseUpdates(int type)
{
    ++count_;
    const Entries entries = *entries_;
    std::exception_ptr first;
    for (const auto& entry : entries) {
        if (entry->removed || entry->hook == nullptr)
            continue;
        try {
            entry->hook(type);
        } catch (...) {
            if (first == nullptr)
                first = std::current_exception();
        }
    }
    if (first != nullptr)
        std::rethrow_exception(first);
}

} // namespace tracery::embedded
