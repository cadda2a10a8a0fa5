#include "adapters/ogr/ogr_feature_class.h"

#include "adapters/ogr/ogr_class_state.h"
#include "adapters/ogr/transaction_editor.h"

namespace wxl::files {

using platform::Search;

OgrFeatureClass::OgrFeatureClass(std::shared_ptr<State> state) : m_state(std::move(state)) {}

OgrFeatureClass::~OgrFeatureClass() = default;

std::shared_ptr<OgrFeatureClass> OgrFeatureClass::Open(const std::string& input, Sources sources) {
    return std::make_shared<OgrFeatureClass>(std::make_shared<State>(input, sources));
}

void OgrFeatureClass::FinishInterrupted(const std::string& input, Sources sources) {
    const auto [path, layer] = split_input(input, sources);
    if (sources == Sources::kPlain) CheckPlain(path);
    std::error_code none;
    if (!std::filesystem::exists(path, none)) return;
    const std::filesystem::path file = main_file_of(std::filesystem::canonical(path), layer);
    if (is_shapefile(file))
        finish_interrupted_swap(file);
    else
        TransactionEditor::FinishInterrupted(file);
}

platform::ShapeType OgrFeatureClass::Shape() const {
    return m_state->Shape();
}

platform::SpatialReference OgrFeatureClass::Reference() const {
    return m_state->Reference();
}

platform::Extent OgrFeatureClass::Bounds() const {
    return m_state->Bounds();
}

std::int64_t OgrFeatureClass::FeatureCount() const {
    return m_state->FeatureCount();
}

platform::ITable& OgrFeatureClass::Table() {
    return *m_state;
}

std::unique_ptr<platform::IFeatureCursor> OgrFeatureClass::Find(const Search& search) {
    return open_cursor(m_state->JoinPass(), search);
}

ChosenRows OgrFeatureClass::Choose(std::vector<std::int64_t> oids) const {
    return m_state->Choose(std::move(oids));
}

ChosenRows OgrFeatureClass::ChooseWhere(const std::string& condition) const {
    return m_state->ChooseWhere(condition);
}

std::unique_ptr<platform::IFeatureCursor> OgrFeatureClass::FindAmong(ChosenRows& rows, const Search& search) {
    auto pass = m_state->JoinPass();
    m_state->Follow(rows);
    return open_cursor(std::move(pass), search, rows);
}

std::int64_t OgrFeatureClass::Count(ChosenRows& rows) const {
    const auto pass = m_state->JoinPass();
    m_state->Follow(rows);
    return static_cast<std::int64_t>(rows.Rows.size());
}

std::unique_ptr<platform::IInsertCursor> OgrFeatureClass::Insert() {
    return open_insert_cursor(m_state->JoinPass());
}

std::vector<std::int64_t> OgrFeatureClass::OIDs() const {
    return m_state->OIDs({});
}

bool OgrFeatureClass::NumbersRepeat() const {
    const auto pass = m_state->JoinPass();
    return m_state->Order() == RowOrder::kRepeating;
}

std::string OgrFeatureClass::WhyReadOnly() const {
    return m_state->WhyReadOnly();
}

std::string OgrFeatureClass::Name() const {
    return m_state->Name();
}

std::filesystem::path OgrFeatureClass::Path() const {
    return m_state->Path();
}

std::vector<std::filesystem::path> OgrFeatureClass::Files() const {
    return m_state->Files();
}

}  // namespace wxl::files
