#pragma once
#include "movement/duplicate_command.h"

namespace wxl::movement {

/// The command "Remove Time2 Field Duplicates": of the selected fixes with equal "Time2" (whole seconds, fractions
/// rounded half to even) only the one with the lowest object ID stays; the others are deleted from the table.
///
/// A selected fix whose Time2 is missing, no number or outside 32 bits ends the pass with the report of an error (13 or
/// 6). Faults are reported in a box and never thrown; deletions made before one stay.
class FIndDupTime2 final : public DuplicateCommand {
public:
    /// Services used: messages, host. They and the window must outlive the command.
    FIndDupTime2(const platform::Services& services, IPleaseWaitWindow& window);

    platform::CommandProperties Properties() const override;

    /// Checks the selected layer and removes the duplicates among its selected fixes.
    void FindandRemoveDupsByTime2() { RemoveDuplicates(); }

private:
    bool Suits(platform::IFeatureClass& features) const override;
    std::unique_ptr<IDuplicateIndex> MakeIndex(platform::IFeatureClass& features) const override;
};

}  // namespace wxl::movement
