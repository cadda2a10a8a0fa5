#pragma once
#include "adapters/ogr/disk_services.h"
#include "akde/range_record.h"
#include "apps/cli/commands/akde.h"
#include "apps/cli/timed_fixes.h"
#include "batch/range_plan.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace wxl::cli {

/// What the options of wxl akde ask for, over the animals of their layer.
class AkdeSession {
public:
    /// WrongCall for options that make no sense, RuntimeError for an input that cannot be used.
    AkdeSession(const AkdeOptions& options, Console& console);

    const akde::RangeSettings& Settings() const { return m_settings; }
    const akde::TimedAnimals& Animals() const { return m_layer.Animals; }
    const platform::Services& Services() const { return m_services; }

    /// What keeps the run from starting; nothing where it may be replaced. RuntimeError 70 where the run would write
    /// over what the command reads.
    std::vector<std::filesystem::path> Taken() const;

    /// Makes the output folder. RuntimeError 58 where names in it are taken, 70 while a batch waits there.
    void PrepareOutput() const;

    /// Plans the run as a batch of about `tasks` tasks (0: as many as is usual).
    batch::RangePlan Plan(std::size_t tasks) const;

private:
    const AkdeOptions& m_options;
    Console& m_console;
    akde::RangeSettings m_settings;
    TimedLayer m_layer;
    files::DiskServices m_disk;
    platform::Services m_services;
};

}  // namespace wxl::cli
