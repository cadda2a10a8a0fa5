#pragma once
#include "platform/folder_lock.h"

#include <memory>
#include <set>
#include <utility>

namespace wxl::memory {

/// Locks on folders of a memory disk; those of them that a test says are held by someone else are refused.
class MemoryFolderLocks final : public platform::IFolderLocks {
public:
    std::unique_ptr<platform::IFolderLock> Take(const std::filesystem::path& folder, std::string& holder) override {
        if (m_held->contains(folder)) {
            holder = "process 4711 on elsewhere";
            return nullptr;
        }
        m_held->insert(folder);
        ++m_taken;
        return std::make_unique<Lock>(m_held, folder);
    }

    /// Sharers of a folder do not meet here: each is refused only by one who took it.
    std::unique_ptr<platform::IFolderLock> Share(const std::filesystem::path& folder, std::string& holder) override {
        return Take(folder, holder);
    }

    /// Makes the folder look locked by another process.
    void Hold(const std::filesystem::path& folder) { m_held->insert(folder); }
    bool IsHeld(const std::filesystem::path& folder) const { return m_held->contains(folder); }

    /// How many locks were given.
    int Taken() const { return m_taken; }

private:
    using Held = std::set<std::filesystem::path>;

    class Lock final : public platform::IFolderLock {
    public:
        Lock(std::shared_ptr<Held> held, std::filesystem::path folder)
            : m_held(std::move(held)), m_folder(std::move(folder)) {}
        ~Lock() override { m_held->erase(m_folder); }
        std::size_t RemoveLeftovers(const std::filesystem::path&) override { return 0; }

    private:
        std::shared_ptr<Held> m_held;
        std::filesystem::path m_folder;
    };

    std::shared_ptr<Held> m_held = std::make_shared<Held>();
    int m_taken = 0;
};

}  // namespace wxl::memory
