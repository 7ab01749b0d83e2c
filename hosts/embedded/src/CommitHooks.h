#pragma once

#include <tracery/host/Services.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace tracery::embedded {

/// Calls the hooks at each commit.
class CommitHooks final : public Graphics {
public:
    std::unique_ptr<HookRegistration> addCommitHook(CommitHook hook) override;
    void commitDatabaseUpdates(int type) override;
    std::size_t count() const noexcept { return count_; }

private:
    struct Entry {
        CommitHook hook;
        bool removed = false;
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;
    class Registration;

    std::shared_ptr<Entries> entries_ = std::make_shared<Entries>(); ///< registrations may outlive the host
    std::size_t count_ = 0;
};

} // namespace tracery::embedded
