#include "movement/OVIOBS.h"

#include "movement/count_limit.h"
#include "movement/error_labels.h"
#include "movement/flushed.h"
#include "movement/observation_steps.h"
#include "movement/selected_layer.h"
#include "movement/time2.h"
#include "platform/guarded.h"

#include <array>

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

/// Writes the results of a row under the names that the calculation uses.
class ResultFields {
public:
    explicit ResultFields(const ITable& table)
        : m_obsSec(table.FindField("T_Obs_Sec")),
          m_cumul(table.FindField("T_Cumul")),
          m_dist(table.FindField("Dist")),
          m_distCumul(table.FindField("Dist_Cumul")),
          m_mePerSec(table.FindField("Me_Per_Sec")),
          m_miPerHr(table.FindField("Mi_Per_Hr")) {}

    /// The first row has nothing before it: only its times are known.
    void WriteFirst(IFeature& row) const {
        row.SetValue(m_obsSec, 0.0);
        row.SetValue(m_cumul, 0.0);
    }

    void Write(IFeature& row, const ObservationStep& step) const {
        row.SetValue(m_obsSec, round_half_even(step.T_Obs_Sec, 3));
        row.SetValue(m_cumul, round_half_even(step.T_Cumul, 3));
        row.SetValue(m_dist, round_half_even(step.Dist, 0));
        row.SetValue(m_distCumul, round_half_even(step.Dist_Cumul, 0));
        row.SetValue(m_mePerSec, round_half_even(step.Me_Per_Sec, 4));
        row.SetValue(m_miPerHr, round_half_even(step.Mi_Per_Hr, 6));
    }

private:
    int m_obsSec, m_cumul, m_dist, m_distCumul, m_mePerSec, m_miPerHr;
};

bool is_utm(const SpatialReference& reference) {
    return reference.Name.find("UTM") != std::string::npos;
}

}  // namespace

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
            messages.Show({.Text = "Please select a points layer", .Title = "Display Tracks"});
            return;
        }
        const auto features = feature_class_of(*layer);
        if (features->Table().FindField(kTime2Field) < 0 || features->Shape() != ShapeType::kPoint) {
            messages.Show({.Text = "You must select a points layer with a Time2 field"});
            return;
        }
        const std::int64_t rows = CountLimit(m_beyondLimits).Checked(features->FeatureCount());
        if (const std::string reason = layer->WhyReadOnly(); !reason.empty()) {
            messages.Show({.Text = reason});
            return;
        }
        m_pleaseWait.SetRange(static_cast<double>(rows));
        const Answer answer = messages.Show({.Text = kQuestion,
                                             .Title = "Add Time and Distance Fields",
                                             .Choice = Buttons::kYesNo,
                                             .About = Topic::kAddFields});
        if (answer != Answer::kYes) return;
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
        const std::string stopped = flushed(*cursor, [&] { return FillRows(*cursor); });
        m_pleaseWait.Hide();
        if (!stopped.empty()) m_services.Messages->Show({.Text = stopped});
    });
}

/// Fills row after row; the message that ends the pass early, or "".
std::string OVIOBS::FillRows(IFeatureCursor& cursor) {
    const auto features = SelectedClass();
    const int time2 = features->Table().FindField(kTime2Field);
    const ResultFields fields(features->Table());
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
            m_pleaseWait.SetPosition(static_cast<double>(rowNumber));
            if (!utm) return kNotUtm;
            const auto step = steps.Next(time2_of(row->Value(time2)), row->Shape());
            if (!step) return kNoTimePassed;
            fields.Write(*row, *step);
        }
        row->Store();
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
