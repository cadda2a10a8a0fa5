#pragma once
#include "movement/duplicate_command.h"

namespace wxl::movement {

/// The command "Remove X/Y Duplicates": of the selected fixes at the same place (see xy_tolerance) the one reached
/// first stays; the others are deleted from the table. Fixes without a location are at no place and stay.
///
/// Faults are reported in a box and never thrown; deletions made before one stay.
class FindDupxy final : public DuplicateCommand {
public:
    /// Services used: messages, host. They and the window must outlive the command.
    FindDupxy(const platform::Services& services, IPleaseWaitWindow& window);

    platform::CommandProperties Properties() const override;

    /// Checks the selected layer and removes the duplicates among its selected fixes.
    void FindandRemoveDupsByxy() { RemoveDuplicates(); }

private:
    bool Suits(platform::IFeatureClass& features) const override;
    std::unique_ptr<IDuplicateIndex> MakeIndex(platform::IFeatureClass& features) const override;
};

}  // namespace wxl::movement
