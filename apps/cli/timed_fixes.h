#pragma once
// The input of wxl models and wxl akde: animals with times.

#include "akde/listener.h"
#include "akde/timed_animals.h"
#include "apps/cli/fix_import.h"
#include "apps/cli/input_layer.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// Where animals and times of a layer or a tracking file stand.
struct TimedInputOptions {
    InputOptions Points;
    FixOptions Fixes;          ///< how a tracking file is read, where INPUT is one
    akde::TimedFields Fields;  ///< empty ones are found
    std::string Where;         ///< condition that the fixes meet; empty: none
};

/// Gives `command` INPUT, --id-field, --time-field, --where, and the options of wxl import.
void add_timed_input_options(CLI::App& command, TimedInputOptions& options);

struct TimedLayer {
    akde::TimedAnimals Animals;
    ReadFiles Read;  ///< the files of the layer
    std::string Name;
    std::string Source;                      ///< what opens it again
    std::vector<std::string> SourceOptions;  ///< and reads a tracking file in the same way
    akde::TimedFields Fields;                ///< that were read
};

/// Reads the layer; a tracking file, or a layer that options of wxl import are given for, is imported into memory, as
/// wxl kde does. WrongCall for an option that makes no sense, RuntimeError as
/// open_measured_point_layer, 9 for a field that is not there or cannot be found, 5 when no fix meets the condition.
TimedLayer read_timed_layer(const TimedInputOptions& options, Console& console);

/// Tells the console how a run goes; Ctrl-C is a wish to stop.
class ConsoleListener final : public akde::IListener {
public:
    explicit ConsoleListener(Console& console) : m_console(console) {}
    void Progress(double share, std::string_view what) override { m_console.Progress(share, what); }
    void EndProgress() override { m_console.EndProgress(); }
    void Note(std::string_view line) override { m_console.Note(line); }
    void Problem(std::string_view line) override { m_console.Problem(line); }
    bool IsStopped() const override;

private:
    Console& m_console;
};

}  // namespace wxl::cli
