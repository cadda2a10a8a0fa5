#pragma once
#include "batch/plan.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace wxl::cli {

/// What the batch scripts are made of.
struct SlurmSettings {
    std::filesystem::path Program;     ///< wxl, as the nodes find it
    std::vector<std::size_t> Tasks;    ///< to be computed, ascending
    std::string Memory;                ///< as --mem takes it; empty: from the estimates
    std::string Time;                  ///< as --time takes it; empty: from the estimates
    std::vector<std::string> Options;  ///< further options of sbatch, one to a line
};

/// A job, or an array of jobs, of this program.
struct BatchJob {
    std::string Name;
    std::filesystem::path Log;  ///< "%a" in its name is the index of an array
    double Megabytes = 0.0;     ///< asked for, unless the user does
    double Seconds = 0.0;
    std::vector<std::size_t> Array;  ///< indices; empty: one job
    std::vector<std::string> Words;  ///< of the command line
};

/// One and a half times the estimate and 256 MB; four times the estimate and ten minutes.
double megabytes_to_ask(double estimated);
double seconds_to_ask(double estimated);

/// The script of a job. One of an array that is requeued starts anew.
std::string job_script(const BatchJob& job, const SlurmSettings& settings);

/// The script of the job array: one task for each index. Memory is one and a half times the estimate and 256 MB, time
/// four times the estimate and ten minutes. A job that is requeued starts its task anew.
std::string array_script(const batch::PlanHead& plan, const SlurmSettings& settings);

/// The script of the job that merges. Memory is one and a half times that of the batch's points, 20 kB for every
/// distribution, and 256 MB.
std::string merge_script(const batch::PlanHead& plan, const SlurmSettings& settings);

/// Hands the script file to sbatch with `options` and returns the job's number. RuntimeError 53 when there is no sbatch
/// on this machine, 5 with sbatch's own words when it refuses.
std::string submit_script(const std::filesystem::path& script, const std::vector<std::string>& options);

}  // namespace wxl::cli
