// Plans and point stores of a batch, of any bytes: used or refused, and a plan that was read is written and read the
// same.

#include "adapters/disk/disk_file_system.h"
#include "batch/plan.h"
#include "batch/point_store.h"
#include "fuzz/patched_files.h"
#include "fuzz/scratch_files.h"

namespace {

using namespace wxl;
using fuzz::require;
namespace fs = std::filesystem;

struct Output {
    Output() { fs::create_directories(Files.Folder); }
    fuzz::FuzzFolder Folder;
    batch::BatchFiles Files{Folder.Path()};
    files::DiskFileSystem Disk;
};

void check_plan(Output& output, const std::string& bytes) {
    fuzz::write_bytes(output.Files.Plan(), bytes);
    batch::Plan plan;
    const std::int32_t fault = fuzz::fault_of([&] { plan = batch::read_plan(output.Disk, output.Folder.Path()); });
    require(fault == 0 || fault == platform::error_number::kDeviceIo, "a plan, or one that cannot be used");
    if (fault != 0) return;
    batch::write_plan(output.Disk, output.Files, plan);
    const std::string written = fuzz::read_bytes(output.Files.Plan());
    const batch::Plan again = batch::read_plan(output.Disk, output.Folder.Path());
    batch::write_plan(output.Disk, output.Files, again);
    require(fuzz::read_bytes(output.Files.Plan()) == written, "a plan that reads back");
}

std::string good_store(Output& output) {
    std::vector<analysis::AnimalFixes> animals(3);
    for (std::size_t i = 0; i < animals.size(); ++i) animals[i].Fixes.assign(i + 1, {500000.0 + double(i), 6000000.0});
    batch::write_point_store(output.Disk, output.Files.Points(), animals);
    return fuzz::read_bytes(output.Files.Points());
}

void check_store(Output& output, fuzz::FuzzInput& input) {
    static const fuzz::Files good = {{"points.bin", good_store(output)}};
    const std::string bytes = fuzz::files_of(input, good).at("points.bin");
    fuzz::write_bytes(output.Files.Points(), bytes);
    const std::int32_t fault = fuzz::fault_of([&] {
        const batch::PointStore store(output.Disk, output.Files.Points());
        std::size_t fixes = 0;
        for (std::size_t animal = 0; animal < store.AnimalCount(); ++animal) fixes += store.Read(animal).size();
        require(fixes * sizeof(platform::Point) <= bytes.size(), "no more fixes than there are bytes");
    });
    require(fault == 0 || fault == platform::error_number::kDeviceIo, "a store, or one that cannot be used");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Output output;
    fuzz::FuzzInput input(data, size);
    // A plan begins with a brace, which is odd.
    if (size > 0 && (data[0] & 1U) != 0U) {
        check_plan(output, input.Rest());
    } else {
        input.Take<std::uint8_t>();
        check_store(output, input);
    }
    return 0;
}
