#include "analysis/preparation.h"

#include "analysis/checks.h"
#include "analysis/coincidence.h"
#include "analysis/diagnosis.h"
#include "analysis/output_names.h"
#include "analysis/questions.h"
#include "analysis/settings_text.h"
#include "analysis/statistics.h"
#include "analysis/subfolders.h"
#include "platform/boxes.h"
#include "platform/runtime_error.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace wxl::analysis {
namespace {

template <class Row>
std::vector<TableRow> table_rows(std::span<const Row> rows) {
    std::vector<TableRow> table;
    for (const Row& row : rows) {
        table.push_back({platform::ValueText(row.Id)});
        for (std::string& cell : cells_of(row)) table.back().push_back(std::move(cell));
    }
    return table;
}

RunHeader header_of(const Settings& settings, const GroupedFixes& animals, std::span<const VarianceRow> variances,
                    const std::optional<ShownIndependence>& independence) {
    RunHeader header;
    header.InputName = settings.LayerName;
    header.IdField = settings.IdField;
    header.TextIds = animals.TextIds;
    header.SelectedOnly = settings.SelectedOnly;
    for (const AnimalFixes& animal : animals.Animals) {
        header.Ids.push_back(platform::ValueText(animal.Id));
        header.NamingIds.push_back(animal.NamingId);
    }
    if (independence) {
        header.IndependenceField = independence->IdField;
        header.Independence = table_rows<IndependenceRow>(independence->Rows);
    }
    header.Variances = table_rows(variances);
    return header;
}

/// Why a folder takes no file, in words for whoever chose it.
std::string writing_fault(const platform::RuntimeError& error) {
    if (error.Number == platform::error_number::kPermissionDenied) return "you have no right to write there";
    if (error.Number == platform::error_number::kDiskFull) return "the disk is full";
    return error.Description;
}

std::vector<SharedPlaces> shared_places(std::span<const AnimalFixes* const> animals) {
    std::vector<SharedPlaces> counts;
    for (const AnimalFixes* animal : animals)
        counts.push_back({platform::ValueText(animal->Id), coincidence_of(animal->Fixes).Fixes,
                          static_cast<std::int64_t>(animal->Fixes.size())});
    return counts;
}

std::vector<std::string> ids_of(std::span<const AnimalFixes* const> animals) {
    std::vector<std::string> ids;
    for (const AnimalFixes* animal : animals) ids.push_back(platform::ValueText(animal->Id));
    return ids;
}

}  // namespace

platform::Layer point_layer(utilities::Utilities& geodata, const std::string& name) {
    if (name.empty()) platform::Raise(platform::error_number::kObjectNotSet, "No point layer is chosen.");
    platform::Layer layer = geodata.GetLayerByName(name);
    if (!layer.Feature || layer.Shape != platform::ShapeType::kPoint || !layer.Feature->FeatureClass())
        platform::Raise(platform::error_number::kObjectNotSet,
                        "The first layer named " + name + " is not a point layer.");
    return layer;
}

std::shared_ptr<platform::IRasterLayer> reference_raster(utilities::Utilities& geodata, const std::string& name) {
    auto raster = geodata.GetLayerByName(name).Raster;
    if (!raster)
        platform::Raise(platform::error_number::kObjectNotSet,
                        "The first layer named " + name + " is not a raster layer.");
    return raster;
}

Preparation::Preparation(const platform::Services& services, utilities::Utilities& geodata, Settings settings,
                         IRunView& view, IReportSink& report, IRunStages& stages)
    : m_services(services), m_geodata(geodata), m_view(view), m_report(report), m_stages(stages) {
    m_frame.Wanted = std::move(settings);
}

Preparation::Outcome Preparation::Prepare() {
    if (!SettingsAreUsable() || !GroupAnimals() || !DescribeLayer() || !TakeFolder() || !NamesAreFree())
        return Outcome::kRefused;
    OpenReport();
    if (AgreeOnBuffer() == Outcome::kCancelled) return Outcome::kCancelled;
    m_report.Write(extent_settings_lines(m_frame.Wanted));
    return AgreeOnOverlaps();
}

void Preparation::Refuse(const std::string& text, const std::string& title) const {
    m_services.Messages->Show({.Text = text, .Title = title, .Kind = platform::BoxKind::kRefusal});
}

bool Preparation::SettingsAreUsable() {
    const auto refusal = refusal_of(m_frame.Wanted);
    if (refusal) Refuse(*refusal);
    m_frame.Values = values_of(m_frame.Wanted);
    return !refusal;
}

bool Preparation::GroupAnimals() {
    m_stages.Stage("Reading points...");
    m_animals = m_view.TakeFixes();
    if (m_animals.NullGeometry) {
        Refuse(
            "Error: null geometry detected in point layer. Please correct or remove these null geometries before "
            "using this tool.");
        return false;
    }
    if (m_animals.Animals.empty()) {
        Refuse(m_frame.Wanted.SelectedOnly
                   ? "Error: no animal was found among the selected points. Please select the points to analyse."
                   : "Error: no animal was found in the point layer: it has no points with a value in the field " +
                         m_frame.Wanted.IdField + ".");
        return false;
    }
    WarnOfMissingIds();
    spread_over_subfolders(m_animals.Animals, m_frame.Wanted.AnimalsPerSubfolder);
    m_frame.TextIds = m_animals.TextIds;
    return true;
}

bool Preparation::DescribeLayer() {
    const platform::Layer layer = point_layer(m_geodata, m_frame.Wanted.LayerName);
    const auto points = layer.Feature->FeatureClass();
    m_frame.Source = layer.Source;
    m_frame.SourceOptions = layer.SourceOptions;
    m_frame.Reference = points->Reference();
    if (m_frame.Wanted.Mode == ExtentMode::kFull) m_frame.LayerExtent = points->Bounds();
    if (m_frame.Wanted.Mode != ExtentMode::kReference) return true;
    m_frame.ReferenceRaster = reference_raster(m_geodata, m_frame.Wanted.ReferenceName);
    if (m_frame.ReferenceRaster->LiesIn(m_frame.Reference)) return true;
    Refuse("Error: the reference layer " + m_frame.ReferenceRaster->Name() +
           " is in another coordinate system than the points (" + m_frame.Reference.Name +
           "). Please choose a raster in that system, or reproject it.");
    return false;
}

void Preparation::WarnOfMissingIds() const {
    const std::int64_t count = m_animals.WithoutId;
    if (count == 0) return;
    platform::ShowWarning(*m_services.Messages, "Warning: " + without_id_text(count, m_frame.Wanted.IdField) +
                                                    (count == 1 ? " and is left out." : " and are left out."));
}

bool Preparation::TakeFolder() {
    m_frame.Folder = output_folder(*m_services.Folders, m_frame.Wanted);
    if (!m_services.Files->FolderExists(m_frame.Folder)) {
        Refuse("Error: the output folder " + m_frame.Wanted.OutputFolder +
               " does not exist. Please choose an existing folder on the Output Options tab.");
        return false;
    }
    if (!m_services.Locks) return true;
    std::string holder;
    try {
        m_lock = m_services.Locks->Take(m_frame.Folder, holder);
    } catch (const platform::RuntimeError& error) {
        Refuse("Error: nothing can be written into the output folder " + m_frame.Wanted.OutputFolder + " (" +
               writing_fault(error) + "). Please choose another folder on the Output Options tab.");
        return false;
    }
    if (!m_lock) {
        Refuse("Error: another analysis is writing into the output folder" +
               (holder.empty() ? std::string() : " (" + holder + ")") +
               ". Please wait until it has finished, or choose another folder.");
        return false;
    }
    for (const std::string& subfolder : subfolders_of(m_animals.Animals))
        platform::RefuseLink(*m_services.Folders, m_frame.Folder / subfolder);
    m_lock->RemoveLeftovers({});
    for (const std::string& subfolder : subfolders_of(m_animals.Animals)) m_lock->RemoveLeftovers(subfolder);
    return true;
}

bool Preparation::NamesAreFree() {
    for (const AnimalFixes& animal : m_animals.Animals) datasets_of(m_frame.Wanted, animal);  // refuses a name
    const bool conflict = std::any_of(m_animals.Animals.begin(), m_animals.Animals.end(), [&](const auto& animal) {
        return m_services.Rasters->Exists(subfolder_in(m_frame.Folder, animal.Subfolder),
                                          m_frame.Wanted.Prefix + animal.NamingId);
    });
    if (conflict) {
        Refuse(
            "Error: naming conflict detected (pre-existing raster in output folder). You should use a new, empty "
            "folder for the output of this tool. Exiting...",
            "User error");
        return false;
    }
    // The numbered names of a list as well: met during the run, they would end it and cost the report of the first.
    const auto taken = taken_names(m_services, m_frame.Wanted, m_frame.Folder, m_animals.Animals);
    if (!taken.empty())
        Refuse("Error: the output folder already holds " + taken.front() +
                   ". You should use a new, empty folder for the output of this tool.",
               "User error");
    return taken.empty();
}

void Preparation::OpenReport() {
    const std::vector<VarianceRow> variances = variance_rows(m_animals.Animals);
    m_view.ShowVariances(variances);
    m_report.Open(file_in_folder(m_frame.Folder, kReportFile));
    RunHeader header = header_of(m_frame.Wanted, m_animals, variances, m_view.Independence());
    // Without a page beside it the report's form is fixed to the letter.
    if (m_frame.Wanted.Html)
        header.Remarks = remarks_of(m_frame.Wanted.IdField, m_animals.WithoutId, m_frame.Reference.IsGeographic);
    header.Start = m_services.Clock->Now();
    m_report.Write(header_lines(header));
    m_report.Write(kernel_settings_lines(m_frame.Wanted));
    WriteRecord();
}

/// A record that cannot be read is replaced all the same.
void Preparation::WriteRecord() {
    const std::filesystem::path record = file_in_folder(m_frame.Folder, kSettingsRecordFile);
    try {
        if (m_services.Files->FileExists(record))
            m_earlierRecord = m_services.Files->ReadFile(record, std::numeric_limits<std::uint64_t>::max());
    } catch (const platform::RuntimeError&) {
        m_earlierRecord.reset();
    }
    m_recordWritten = true;
    platform::PublishFile(*m_services.Files, record, m_view.SettingsRecord(m_frame.Wanted));
}

void Preparation::TakeBackRecord() {
    if (!m_recordWritten) return;
    const std::filesystem::path record = file_in_folder(m_frame.Folder, kSettingsRecordFile);
    if (m_earlierRecord) return platform::PublishFile(*m_services.Files, record, *m_earlierRecord);
    m_services.Files->DeleteFile(record, false);
}

Preparation::Outcome Preparation::AgreeOnBuffer() {
    Settings& settings = m_frame.Wanted;
    if (settings.Mode != ExtentMode::kFull) return Outcome::kGoOn;
    const BufferAdvice advice = recommended_buffer(settings, m_view.LargestHref());
    if (!(advice.Shown > settings.Buffer.Value.value_or(0.0))) return Outcome::kGoOn;
    const auto answer = m_services.Messages->Show({.Text = buffer_question(advice),
                                                   .Title = "Warning",
                                                   .Sign = platform::Icon::kExclamation,
                                                   .Choice = platform::Buttons::kYesNoCancel,
                                                   .About = platform::Topic::kBuffer,
                                                   .Kind = platform::BoxKind::kQuestion});
    if (answer == platform::Answer::kCancel) return Outcome::kCancelled;
    if (answer == platform::Answer::kYes) {
        settings.Buffer = typed_number(advice.Accepted);
        m_view.ShowBuffer(settings.Buffer);
    }
    return Outcome::kGoOn;
}

Preparation::Outcome Preparation::AgreeOnOverlaps() {
    if (m_frame.Wanted.AsksSearchesOnly && !is_search(m_frame.Wanted.Method)) return Outcome::kGoOn;
    std::vector<const AnimalFixes*> sharing;
    for (const AnimalFixes& animal : m_animals.Animals)
        if (has_overlap(animal.Fixes)) sharing.push_back(&animal);
    if (sharing.empty()) return Outcome::kGoOn;
    platform::MessageBox question{.Title = "Warning",
                                  .Sign = platform::Icon::kExclamation,
                                  .Choice = platform::Buttons::kYesNo,
                                  .About = platform::Topic::kOverlap,
                                  .Kind = platform::BoxKind::kQuestion};
    if (m_frame.Wanted.AsksSearchesOnly) {
        const std::vector<SharedPlaces> counts = shared_places(sharing);
        question.Text = search_overlap_question(counts);
        if (is_harmless(counts)) question.Advised = platform::Answer::kYes;
    } else {
        question.Text = overlap_question(ids_of(sharing));
    }
    const auto answer = m_services.Messages->Show(question);
    return answer == platform::Answer::kYes ? Outcome::kGoOn : Outcome::kCancelled;
}

}  // namespace wxl::analysis
