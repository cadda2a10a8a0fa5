#include "kde_tool/run_preparation.h"

#include "kde_tool/boxes.h"
#include "kde_tool/frmKDE.h"
#include "kde_tool/run_plan.h"
#include "kde_tool/standing_outputs.h"
#include "kde_tool/subfolders.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <limits>

namespace wxl::kde_tool {
namespace {

BandwidthMethod method_of(const frmKDE& form) {
    if (form.optBE_LSCV.Value) return BandwidthMethod::kLscv;
    if (form.optBE_BCV.Value) return BandwidthMethod::kBcv;
    if (form.optBE_MANUAL.Value) return BandwidthMethod::kManual;
    if (form.optPropHref.Value) return BandwidthMethod::kProportion;
    return BandwidthMethod::kHref;
}

ExtentMode mode_of(const frmKDE& form) {
    if (form.optSmall.Value) return ExtentMode::kMinimum;
    if (form.optExtRef.Value) return ExtentMode::kReference;
    return ExtentMode::kFull;
}

/// Rows of a statistics table as the report shows them: `keep` cells at the end, after the ID.
std::vector<TableRow> report_rows(const platform::DataGrid& table, std::size_t keep) {
    std::vector<TableRow> rows;
    for (const TableRow& cells : table.Rows) {
        TableRow row = {cells.front()};
        row.insert(row.end(), cells.end() - static_cast<std::ptrdiff_t>(std::min(keep, cells.size() - 1)), cells.end());
        rows.push_back(std::move(row));
    }
    return rows;
}

bool is_taken(const platform::Services& services, const std::filesystem::path& place, const std::string& name) {
    return services.Rasters->Exists(place, name) || services.Files->FolderExists(place / name) ||
           services.Files->FileExists(place / name);
}

bool holds(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string shown_name(const AnimalFixes& animal, const std::string& name) {
    return animal.Subfolder.empty() ? name : animal.Subfolder + "/" + name;
}

RunHeader header_of(const frmKDE& form, const GroupedFixes& animals, const platform::DateTime& start) {
    RunHeader header;
    header.Start = start;
    header.InputName = form.cmbPntL.Text();
    header.IdField = form.cmbUIDFLD.Text();
    header.TextIds = animals.TextIds;
    header.SelectedOnly = form.chkUseSel.Value != 0;
    for (const AnimalFixes& animal : animals.Animals) {
        header.Ids.push_back(platform::ValueText(animal.Id));
        header.NamingIds.push_back(animal.NamingId);
    }
    if (!form.datagridIO.Columns.empty()) {
        header.IndependenceField = form.datagridIO.Columns.front();
        header.Independence = report_rows(form.datagridIO, 3);
    }
    header.Variances = report_rows(form.datagridVar, 4);
    return header;
}

}  // namespace

std::filesystem::path file_in_folder(const std::filesystem::path& folder, const char* name) {
    return folder / (name + 1);
}

RunInputs inputs_of(const frmKDE& form) {
    RunInputs inputs;
    inputs.LayerName = form.cmbPntL.Text();
    inputs.Where = form.Where;
    inputs.IdField = form.cmbUIDFLD.Text();
    inputs.SelectedOnly = form.chkUseSel.Value != 0;
    inputs.Rescale = form.chkRescale.Value != 0;
    inputs.FixedKernel = !form.optAdaptive.Value;
    inputs.Method = method_of(form);
    inputs.BandwidthText = form.txtBW.Text;
    inputs.ProportionText = form.txtPropHref.Text;
    inputs.OutputFolder = form.OutputFolder();
    inputs.Prefix = form.txtR.Text;
    inputs.CellSizeText = form.txtCellSize.Text;
    inputs.ScalingText = form.txtScaling.Text;
    inputs.Verbose = form.chkVerbose.Value != 0;
    inputs.Mode = mode_of(form);
    inputs.BufferText = form.txtBuffer.Text;
    inputs.ReferenceName = form.cmbExtRef.Text();
    inputs.Isopleths = form.chkBnds.Value != 0;
    inputs.IsoplethText = form.txtBnds.Text;
    inputs.Lines = form.chkLines.Value != 0;
    inputs.Polygons = form.chkPolys.Value != 0;
    inputs.Donuts = form.chkDonuts.Value != 0;
    inputs.Silent = form.chkSilent.Value != 0;
    inputs.Html = form.chkHtml.Value != 0;
    inputs.ReachText = form.Reach;
    return inputs;
}

std::shared_ptr<platform::IRasterLayer> reference_raster(const frmKDE& form, const std::string& name) {
    auto raster = form.Geodata().GetLayerByName(name).Raster;
    if (!raster)
        platform::Raise(platform::error_number::kObjectNotSet,
                        "The first layer named " + name + " is not a raster layer.");
    return raster;
}

std::vector<std::string> taken_names(const platform::Services& services, const OutputPlace& place,
                                     const RunInputs& inputs, std::span<const AnimalFixes> animals) {
    const std::size_t count = place.Values;
    std::vector<std::string> taken;
    for (const AnimalFixes& animal : animals) {
        const std::filesystem::path folder = animal.Subfolder.empty() ? place.Folder : place.Folder / animal.Subfolder;
        const std::string plain = inputs.Prefix + animal.NamingId;
        const bool conflict = services.Rasters->Exists(folder, plain);
        if (conflict) taken.push_back(shown_name(animal, plain));
        for (std::size_t number = 1; number <= count; ++number) {
            const std::string name = raster_name(inputs, animal.NamingId, number, count);
            if (!(conflict && name == plain) && is_taken(services, folder, name))
                taken.push_back(shown_name(animal, name));
        }
    }
    // Of other datasets, and of lone side files, the run would learn when it comes to write them.
    for (const auto& dataset : standing_outputs(*services.Files, inputs, place, animals)) {
        const std::filesystem::path name = dataset.front().lexically_relative(place.Folder);
        if (!holds(taken, name.string()) && !holds(taken, (name.parent_path() / name.stem()).string()))
            taken.push_back(name.string());
    }
    return taken;
}

RunPreparation::RunPreparation(frmKDE& form, IReportSink& report, IRunStages& stages)
    : m_form(form), m_services(form.Services()), m_report(report), m_stages(stages) {}

RunPreparation::Outcome RunPreparation::Prepare() {
    m_frame.Inputs = inputs_of(m_form);
    if (!SettingsAreUsable() || !ParseLists() || !GroupAnimals() || !TakeFolder() || !NamesAreFree())
        return Outcome::kRefused;
    OpenReport();
    if (AgreeOnBuffer() == Outcome::kCancelled) return Outcome::kCancelled;
    m_report.Write(extent_settings_lines(m_frame.Inputs));
    return AgreeOnOverlaps();
}

void RunPreparation::Refuse(const std::string& text, const std::string& title) const {
    m_services.Messages->Show({.Text = text, .Title = title});
}

bool RunPreparation::SettingsAreUsable() {
    const auto refusal = undefined_setting(m_frame.Inputs);
    if (refusal) Refuse(*refusal);
    return !refusal;
}

bool RunPreparation::ParseLists() {
    if (const auto refusal = malformed_list(m_frame.Inputs)) {
        Refuse(*refusal);
        return false;
    }
    m_frame.Values = bandwidth_values(m_frame.Inputs);
    if (m_frame.Inputs.Isopleths) {
        auto percentages = isopleth_percentages(m_frame.Inputs.IsoplethText);
        if (!percentages) {
            Refuse("Error: an invalid isopleth value was detected. Please check these values and run the tool again.");
            return false;
        }
        m_frame.Percentages = std::move(*percentages);
    }
    if (const auto refusal = unusable_setting(m_frame.Inputs)) {
        Refuse(*refusal);
        return false;
    }
    m_frame.ScalingFactor = platform::NumberFromText(m_frame.Inputs.ScalingText);
    if (platform::IsNumeric(m_frame.Inputs.CellSizeText))
        m_frame.CellSize = platform::NumberFromText(m_frame.Inputs.CellSizeText);
    return true;
}

bool RunPreparation::GroupAnimals() {
    m_stages.Stage("Reading points...");
    m_animals = m_form.TakeFixes();
    if (m_animals.NullGeometry) {
        Refuse(
            "Error: null geometry detected in point layer. Please correct or remove these null geometries before "
            "using this tool.");
        return false;
    }
    if (m_animals.Animals.empty()) {
        Refuse(m_frame.Inputs.SelectedOnly
                   ? "Error: no animal was found among the selected points. Please select the points to analyse."
                   : "Error: no animal was found in the point layer: it has no points with a value in the field " +
                         m_frame.Inputs.IdField + ".");
        return false;
    }
    WarnOfMissingIds();
    spread_over_subfolders(m_animals.Animals, m_form.AnimalsPerSubfolder);
    const platform::Layer layer = m_form.PointLayer();
    m_frame.Inputs.Source = layer.Source;
    const auto points = layer.Feature->FeatureClass();
    m_frame.TextIds = m_animals.TextIds;
    m_frame.Reference = points->Reference();
    m_frame.RasterFormat = m_form.RasterFormat;
    if (m_frame.Inputs.Mode == ExtentMode::kFull) m_frame.LayerExtent = points->Bounds();
    if (m_frame.Inputs.Mode == ExtentMode::kReference)
        m_frame.ReferenceRaster = reference_raster(m_form, m_frame.Inputs.ReferenceName);
    if (!m_frame.ReferenceRaster || m_frame.ReferenceRaster->LiesIn(m_frame.Reference)) return true;
    Refuse("Error: the reference layer " + m_frame.ReferenceRaster->Name() +
           " is in another coordinate system than the points (" + m_frame.Reference.Name +
           "). Please choose a raster in that system, or reproject it.");
    return false;
}

void RunPreparation::WarnOfMissingIds() const {
    const std::int64_t count = m_animals.WithoutId;
    if (count == 0) return;
    const std::string& field = m_frame.Inputs.IdField;
    ShowWarning(*m_services.Messages, count == 1
                                          ? "Warning: 1 point has no value in the field " + field + " and is left out."
                                          : "Warning: " + std::to_string(count) +
                                                " points have no value in the field " + field + " and are left out.");
}

bool RunPreparation::TakeFolder() {
    m_frame.Folder = m_form.OutputFolderPath();
    if (!m_services.Files->FolderExists(m_frame.Folder)) {
        Refuse("Error: the output folder " + m_frame.Inputs.OutputFolder +
               " does not exist. Please choose an existing folder on the Output Options tab.");
        return false;
    }
    if (!m_services.Locks) return true;
    std::string holder;
    m_lock = m_services.Locks->Take(m_frame.Folder, holder);
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

bool RunPreparation::NamesAreFree() {
    for (const AnimalFixes& animal : m_animals.Animals)
        for (std::size_t number = 1; number <= m_frame.Values.size(); ++number)
            for (const std::string& name : dataset_names(
                     m_frame.Inputs, raster_name(m_frame.Inputs, animal.NamingId, number, m_frame.Values.size())))
                platform::CheckDatasetName(name);
    const bool conflict = std::any_of(m_animals.Animals.begin(), m_animals.Animals.end(), [&](const auto& animal) {
        return m_services.Rasters->Exists(output_folder(m_frame, animal.Subfolder),
                                          m_frame.Inputs.Prefix + animal.NamingId);
    });
    if (conflict) {
        Refuse(
            "Error: naming conflict detected (pre-existing raster in output folder). You should use a new, empty "
            "folder for the output of this tool. Exiting...",
            "User error");
        return false;
    }
    // The numbered names of a list as well: met during the run, they would end it and cost the report of the first.
    const auto taken = taken_names(m_services, {m_frame.Folder, m_frame.RasterFormat, m_frame.Values.size()},
                                   m_frame.Inputs, m_animals.Animals);
    if (!taken.empty())
        Refuse("Error: the output folder already holds " + taken.front() +
                   ". You should use a new, empty folder for the output of this tool.",
               "User error");
    return taken.empty();
}

void RunPreparation::OpenReport() {
    m_form.FillVarianceTable(m_animals);
    m_report.Open(file_in_folder(m_frame.Folder, kReportFile));
    m_report.Write(header_lines(header_of(m_form, m_animals, m_services.Clock->Now())));
    m_report.Write(kernel_settings_lines(m_frame.Inputs));
    WriteRecord();
}

/// A record that cannot be read is replaced all the same.
void RunPreparation::WriteRecord() {
    const std::filesystem::path record = file_in_folder(m_frame.Folder, kSettingsRecordFile);
    try {
        if (m_services.Files->FileExists(record))
            m_earlierRecord = m_services.Files->ReadFile(record, std::numeric_limits<std::uint64_t>::max());
    } catch (const platform::RuntimeError&) {
        m_earlierRecord.reset();
    }
    m_recordWritten = true;
    m_form.SaveSettings(record);
}

void RunPreparation::TakeBackRecord() {
    if (!m_recordWritten) return;
    const std::filesystem::path record = file_in_folder(m_frame.Folder, kSettingsRecordFile);
    if (m_earlierRecord) return platform::PublishFile(*m_services.Files, record, *m_earlierRecord);
    m_services.Files->DeleteFile(record, false);
}

RunPreparation::Outcome RunPreparation::AgreeOnBuffer() {
    if (m_frame.Inputs.Mode != ExtentMode::kFull) return Outcome::kGoOn;
    m_frame.Buffer = platform::NumberFromText(m_frame.Inputs.BufferText);
    const BufferAdvice advice = recommended_buffer(m_frame.Inputs.Method, largest_value(m_frame.Inputs, m_frame.Values),
                                                   m_form.LargestReferenceBandwidth());
    if (!(advice.Shown > m_frame.Buffer)) return Outcome::kGoOn;
    const auto answer = m_services.Messages->Show({.Text = buffer_question(advice),
                                                   .Title = "Warning",
                                                   .Sign = platform::Icon::kExclamation,
                                                   .Choice = platform::Buttons::kYesNoCancel,
                                                   .About = platform::Topic::kBuffer});
    if (answer == platform::Answer::kCancel) return Outcome::kCancelled;
    if (answer == platform::Answer::kYes) {
        m_frame.Buffer = advice.Accepted;
        m_form.txtBuffer.Text = platform::NumberText(advice.Accepted);
        m_frame.Inputs.BufferText = m_form.txtBuffer.Text;
    }
    return Outcome::kGoOn;
}

RunPreparation::Outcome RunPreparation::AgreeOnOverlaps() {
    std::vector<std::string> ids;
    for (const AnimalFixes& animal : m_animals.Animals)
        if (has_overlap(animal.Fixes)) ids.push_back(platform::ValueText(animal.Id));
    if (ids.empty()) return Outcome::kGoOn;
    const auto answer = m_services.Messages->Show({.Text = overlap_question(ids),
                                                   .Title = "Warning",
                                                   .Sign = platform::Icon::kExclamation,
                                                   .Choice = platform::Buttons::kYesNo,
                                                   .About = platform::Topic::kOverlap});
    return answer == platform::Answer::kYes ? Outcome::kGoOn : Outcome::kCancelled;
}

}  // namespace wxl::kde_tool
