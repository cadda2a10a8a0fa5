#include "movement/OVIOBS.h"

#include "movement/count_limit.h"
#include "movement/error_labels.h"
#include "movement/flushed.h"
#include "movement/observation_steps.h"
#include "movement/selected_layer.h"
#include "movement/time2.h"
#include "platform/guarded.h"
#include "utilities/animal_names.h"

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::observation_fields;

namespace {

// The last two are created under one spelling and looked up under another; look-ups do not regard case.
constexpr std::array kAddedFields = {"T_Obs_Sec", "T_Cumul", "Dist", "Dist_Cumul", "Me_per_Sec", "Mi_per_hr"};
constexpr std::array kDeletedFields = {"Me_per_Sec", "Mi_per_hr", "T_Obs_Sec", "T_Cumul", "Dist", "Dist_Cumul"};

constexpr const char* kQuestion =
    "This will add the following fields to the selected layer.\n\n"
    "T_Obs_Sec = Time since last observation in seconds\n"
    "T_Cumul = Time cumulative in seconds\n"
    "Dist = Distance from last observation in meters\n"
    "Dist_Cumul = Distance cumulative in meters\n"
    "Me_Per_Sec = Meters per second from last obs.\n"
    "Mi_Per_Hr = Miles per hour from last obs.\n";
constexpr const char* kNoTime2 = "Can not calculate fields.  There is not a Time2 field in the table";
constexpr const char* kNotUtm =
    "The fields have not been calculated! The data needs to be in and defined with a UTM projection.";
constexpr const char* kNoTimePassed =
    "Divide by zero!!  Check your data.  \n"
    "You can not have a value of zero in the time2 field \n"
    "or two observartions that were taken at the same time.";

bool is_utm(const SpatialReference& reference) {
    return reference.Name.find("UTM") != std::string::npos;
}

/// A value that a column would not hold as it is.
struct Misfit {
    std::string Text;
};

/// RuntimeError 6 or 13 when the row, after the value was set, holds another one.
void require_held(const IFeature& row, int field, const FieldValue& value, const Field& column) {
    if (IsMissing(value)) return;
    if (column.Type == FieldType::kDate)
        Raise(error_number::kTypeMismatch, "The field \"" + column.Name + "\" holds dates, and the value " +
                                               ValueText(value) + " is none. Please rename or delete the field.");
    if (!ValueEquals(row.Value(field), value))
        Raise(error_number::kOverflow, "The field \"" + column.Name + "\" holds whole numbers, and the value " +
                                           ValueText(value) + " is none. Please rename or delete the field.");
}

}  // namespace

/// The result columns, under the names that the calculation uses.
class OVIOBS::ResultFields {
public:
    enum class Doing { kFill, kTry };

    /// kTry: values are set on rows but not stored, and columns that are not there yet are passed over.
    ResultFields(const ITable& table, Doing doing)
        : m_columns(table.Fields()),
          m_doing(doing),
          m_obsSec(table.FindField("T_Obs_Sec")),
          m_cumul(table.FindField("T_Cumul")),
          m_dist(table.FindField("Dist")),
          m_distCumul(table.FindField("Dist_Cumul")),
          m_mePerSec(table.FindField("Me_Per_Sec")),
          m_miPerHr(table.FindField("Mi_Per_Hr")) {}

    bool Fills() const { return m_doing == Doing::kFill; }

    /// The first row has nothing before it: only its times are known.
    void WriteFirst(IFeature& row) const {
        Set(row, m_obsSec, 0.0);
        Set(row, m_cumul, 0.0);
    }

    /// The first row of an animal: no distances and speeds are left of another track.
    void WriteFirstOfAnimal(IFeature& row) const {
        WriteFirst(row);
        for (const int field : {m_dist, m_distCumul, m_mePerSec, m_miPerHr}) Set(row, field, {});
    }

    void WriteNothing(IFeature& row) const {
        for (const int field : {m_obsSec, m_cumul, m_dist, m_distCumul, m_mePerSec, m_miPerHr}) Set(row, field, {});
    }

    void Write(IFeature& row, const ObservationStep& step) const {
        Set(row, m_obsSec, round_half_even(step.T_Obs_Sec, 3));
        Set(row, m_cumul, round_half_even(step.T_Cumul, 3));
        Set(row, m_dist, round_half_even(step.Dist, 0));
        Set(row, m_distCumul, round_half_even(step.Dist_Cumul, 0));
        Set(row, m_mePerSec, round_half_even(step.Me_Per_Sec, 4));
        Set(row, m_miPerHr, round_half_even(step.Mi_Per_Hr, 6));
    }

    void Store(IFeature& row) const {
        if (Fills()) row.Store();
    }

private:
    void Set(IFeature& row, int field, const FieldValue& value) const {
        if (Fills()) return row.SetValue(field, value);
        if (field < 0) return;
        try {
            row.SetValue(field, value);
            require_held(row, field, value, m_columns.at(static_cast<std::size_t>(field)));
        } catch (const RuntimeError& error) {
            throw Misfit{error.Description};
        }
    }

    std::vector<Field> m_columns;
    Doing m_doing;
    int m_obsSec, m_cumul, m_dist, m_distCumul, m_mePerSec, m_miPerHr;
};

OVIOBS::OVIOBS(const Services& services, IPleaseWaitWindow& window)
    : m_services(services), m_pleaseWait(*services.Host, window) {}

CommandProperties OVIOBS::Properties() const {
    return {.Name = "CalcOBS",
            .Caption = "Calculate Travel Times and Distances",
            .Tooltip = "Calc Observation Fields",
            .Message = "Calculate Travel Times and Distances"};
}

void OVIOBS::OnCreate(const std::shared_ptr<IApplication>& hook) {
    m_application = hook;
    m_document = hook ? hook->Document() : nullptr;
}

void OVIOBS::CalcObsFields() {
    Guarded(*m_services.Messages, labels::kCalcObsFields, [&] {
        IMessages& messages = *m_services.Messages;
        const auto layer = selected_feature_layer(Document());
        if (!layer) {
            messages.Show({.Text = "Please select a points layer",
                           .Title = "Display Tracks",
                           .Kind = platform::BoxKind::kRefusal});
            return;
        }
        const auto features = feature_class_of(*layer);
        if (features->Table().FindField(kTime2Field) < 0 || features->Shape() != ShapeType::kPoint) {
            messages.Show(
                {.Text = "You must select a points layer with a Time2 field", .Kind = platform::BoxKind::kRefusal});
            return;
        }
        const std::int64_t rows = CountLimit(m_beyondLimits).Checked(features->FeatureCount());
        if (const std::string reason = layer->WhyReadOnly(); !reason.empty()) {
            messages.Show({.Text = reason, .Kind = platform::BoxKind::kRefusal});
            return;
        }
        m_pleaseWait.SetRange(static_cast<double>(rows));
        const Answer answer = messages.Show({.Text = kQuestion,
                                             .Title = "Add Time and Distance Fields",
                                             .Choice = Buttons::kYesNo,
                                             .About = Topic::kAddFields,
                                             .Kind = platform::BoxKind::kQuestion});
        if (answer != Answer::kYes) return;
        if (const std::string misfit = m_checksValuesFirst ? TryValues() : ""; !misfit.empty()) {
            messages.Show({.Text = misfit, .Kind = platform::BoxKind::kRefusal});
            return;
        }
        Addfields();
        CalcFeatures(getAndSelectAllFromActiveLayer());
    });
}

void OVIOBS::Addfields() {
    Guarded(*m_services.Messages, labels::kAddFields, [&] {
        const auto features = SelectedClass();
        ITable& table = features->Table();
        for (const char* name : kAddedFields)
            if (table.FindField(name) < 0) table.AddField({.Name = name, .Type = FieldType::kDouble});
    });
}

std::unique_ptr<IFeatureCursor> OVIOBS::getAndSelectAllFromActiveLayer() {
    return Guarded(*m_services.Messages, labels::kGetAndSelectAll, [&] { return SelectedClass()->Find({}); });
}

void OVIOBS::CalcFeatures(std::unique_ptr<IFeatureCursor> cursor) {
    Guarded(*m_services.Messages, labels::kCalcFeatures, [&] {
        m_pleaseWait.Show();
        if (!cursor) Raise(error_number::kObjectNotSet);
        const ResultFields fields(SelectedClass()->Table(), ResultFields::Doing::kFill);
        const std::string stopped = flushed(*cursor, [&] { return FillRows(*cursor, fields); });
        m_pleaseWait.Hide();
        if (!stopped.empty()) m_services.Messages->Show({.Text = stopped});
    });
}

/// Walks over the rows as CalcFeatures does and stores nothing. The first value that does not fit, in a sentence, or
/// ""; any other fault is left to the pass that stores.
std::string OVIOBS::TryValues() {
    const auto features = SelectedClass();
    const ITable& table = features->Table();
    const bool isNew = std::none_of(kAddedFields.begin(), kAddedFields.end(),
                                    [&](const char* name) { return table.FindField(name) >= 0; });
    if (isNew) return {};
    try {
        FillRows(*features->Find({}), ResultFields(table, ResultFields::Doing::kTry));
    } catch (const Misfit& misfit) {
        return misfit.Text;
    } catch (const RuntimeError&) {
        return {};
    }
    return {};
}

/// Fills row after row; the message that ends the pass early, or "".
std::string OVIOBS::FillRows(IFeatureCursor& cursor, const ResultFields& fields) {
    return m_animalField.empty() ? FillTrack(cursor, fields) : FillTracks(cursor, fields);
}

std::string OVIOBS::FillTrack(IFeatureCursor& cursor, const ResultFields& fields) {
    const auto features = SelectedClass();
    const int time2 = features->Table().FindField(kTime2Field);
    const bool utm = is_utm(features->Reference());
    const CountLimit limit(m_beyondLimits);
    ObservationSteps steps(*m_services.Geometry);

    std::int64_t rowNumber = 0;
    while (const auto row = cursor.NextFeature()) {
        rowNumber = limit.Checked(rowNumber + 1);
        if (rowNumber == 1) {
            if (time2 < 0) return kNoTime2;
            steps.Start(time2_of(row->Value(time2)), row->Shape());
            fields.WriteFirst(*row);
        } else {
            if (fields.Fills()) m_pleaseWait.SetPosition(static_cast<double>(rowNumber));
            if (!utm) return kNotUtm;
            const auto step = steps.Next(time2_of(row->Value(time2)), row->Shape());
            if (!step) return kNoTimePassed;
            fields.Write(*row, *step);
        }
        fields.Store(*row);
    }
    return {};
}

/// As FillTrack for each animal, in one pass over rows in any order.
std::string OVIOBS::FillTracks(IFeatureCursor& cursor, const ResultFields& fields) {
    const auto features = SelectedClass();
    const int time2 = features->Table().FindField(kTime2Field);
    const int animalField = features->Table().FindField(m_animalField);
    if (animalField < 0) Raise(error_number::kSubscript, "There is no field \"" + m_animalField + "\".");
    if (time2 < 0) return kNoTime2;
    const bool utm = is_utm(features->Reference());
    const CountLimit limit(m_beyondLimits);
    std::map<FieldValue, ObservationSteps, utilities::AnimalLess> tracks;

    std::int64_t rowNumber = 0;
    while (const auto row = cursor.NextFeature()) {
        rowNumber = limit.Checked(rowNumber + 1);
        if (fields.Fills()) m_pleaseWait.SetPosition(static_cast<double>(rowNumber));
        const FieldValue animal = row->Value(animalField);
        if (!utilities::names_an_animal(animal)) {
            fields.WriteNothing(*row);
        } else if (const auto [track, isNew] = tracks.try_emplace(animal, *m_services.Geometry); isNew) {
            track->second.Start(time2_of(row->Value(time2)), row->Shape());
            fields.WriteFirstOfAnimal(*row);
        } else {
            if (!utm) return kNotUtm;
            const auto step = track->second.Next(time2_of(row->Value(time2)), row->Shape());
            if (!step) return kNoTimePassed;
            fields.Write(*row, *step);
        }
        fields.Store(*row);
    }
    return {};
}

void OVIOBS::DeleteFields() {
    Guarded(*m_services.Messages, labels::kDeleteFields, [&] {
        const auto features = SelectedClass();
        ITable& table = features->Table();
        for (const char* name : kDeletedFields)
            if (const int field = table.FindField(name); field >= 0) table.DeleteField(field);
    });
}

std::shared_ptr<ISelectionSet> OVIOBS::GetSelectionFrom2Layer(const std::string& name) {
    return Guarded(*m_services.Messages, labels::kGetSelectionFrom2Layer,
                   [&] { return selection_of_layer_named(Document(), name); });
}

std::shared_ptr<ISelectionSet> OVIOBS::GetSelectionFromActiveLayer() {
    return Guarded(*m_services.Messages, labels::kGetSelectionFromActiveLayer,
                   [&] { return selection_of_selected_layer(Document()); });
}

IMxDocument& OVIOBS::Document() const {
    if (!m_document) Raise(error_number::kObjectNotSet);
    return *m_document;
}

std::shared_ptr<IFeatureClass> OVIOBS::SelectedClass() const {
    const auto layer = selected_feature_layer(Document());
    if (!layer) Raise(error_number::kObjectNotSet);
    return feature_class_of(*layer);
}

}  // namespace wxl::movement
