#pragma once
// What a page is made from: values of the run and its records. The datasets are read back from the output folder.

#include "analysis/animal_fixes.h"
#include "analysis/methods_paragraph.h"
#include "analysis/record.h"
#include "analysis/settings.h"
#include "platform/clock.h"
#include "platform/values.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wxl::results_page {

/// A run as its page tells of it.
struct PageRun {
    analysis::Settings Wanted;
    std::string Source;                      ///< of the point layer; empty: no file that is known
    std::vector<std::string> SourceOptions;  ///< that make the layer of a tracking file
    bool ManyValues = false;                 ///< several bandwidths or proportions per animal
    platform::SpatialReference Reference;
    std::filesystem::path Folder;
    platform::DateTime Start;
    platform::DateTime Finish;
    bool Stopped = false;
    analysis::MethodsParagraph Methods = {};          ///< of all records
    std::vector<analysis::AnimalRecord> Records;      ///< in the order of the run
    const analysis::GroupedFixes* Animals = nullptr;  ///< of the run; null where they are not known
};

/// How big the pictures of a page may be, so that a page of thousands of animals stays one that a browser opens.
struct PictureSize {
    std::int32_t Side = 300;        ///< of the density pictures
    std::size_t LinePoints = 3000;  ///< of all isopleths of one map
    std::size_t Dots = 2000;        ///< of fixes on one map
};
PictureSize picture_size(std::size_t distributions);

/// The name of a record's section: "animal-" and its number in the run, from 1.
std::string section_id(std::size_t number);

/// How a record is called: the animal's ID, and which of several values.
std::string record_name(const PageRun& run, const analysis::AnimalRecord& record);

/// Whether areas can be told in square kilometres; else they are in square map units.
bool has_kilometres(const PageRun& run);

/// "km²", or the CRS's unit squared.
std::string area_unit(const PageRun& run);

/// The area in area_unit, four digits; "" where there is none.
std::string area_text(const PageRun& run, std::optional<double> area);

/// The area in hectares, four digits; "" where there is none, or where its unit is not known.
std::string hectares_text(const PageRun& run, std::optional<double> area);

/// Whether the times of any animal's fixes are known.
bool has_times(const PageRun& run);

/// "0 s", "14.9 min", "5.2 h".
std::string interval_text(double seconds);

/// The fixes of the record's animal; none where they are not known.
std::span<const platform::Point> fixes_of(const PageRun& run, const analysis::AnimalRecord& record);

/// What the projection does to sizes, at most over the fixes of all animals; nothing where it is not known.
std::optional<platform::Distortion> distortion_of(const PageRun& run);

/// "m" for metres, else the CRS's name of the unit, or "map units".
std::string length_unit(const PageRun& run);

/// "LSCV", "BCV", "HREF", "user-defined", "proportion of HREF" or "ad hoc".
const char* method_text(analysis::BandwidthMethod method);

/// Shares of the scaling factor: "99.98 %".
std::string volume_text(const PageRun& run, const analysis::AnimalRecord& record);

/// Whether the raster cuts the distribution, by what it holds.
bool is_cut(const analysis::AnimalRecord& record);

/// "minimised", "not minimised", or "" where nothing was searched.
const char* search_text(const analysis::AnimalRecord& record);

}  // namespace wxl::results_page
