#include "adapters/files/ogr_feature_class.h"

#include "adapters/files/ogr_class_state.h"

#include <algorithm>
#include <iterator>

namespace wxl::files {

using platform::Search;

OgrFeatureClass::OgrFeatureClass(std::shared_ptr<State> state) : m_state(std::move(state)) {}

OgrFeatureClass::~OgrFeatureClass() = default;

std::shared_ptr<OgrFeatureClass> OgrFeatureClass::Open(const std::string& input, Sources sources) {
    return std::make_shared<OgrFeatureClass>(std::make_shared<State>(input, sources));
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

std::unique_ptr<platform::IFeatureCursor> OgrFeatureClass::FindAmong(std::vector<std::int64_t> oids,
                                                                     const Search& search) {
    return open_cursor(m_state->JoinPass(), search, std::move(oids));
}

std::unique_ptr<platform::IInsertCursor> OgrFeatureClass::Insert() {
    return open_insert_cursor(m_state->JoinPass());
}

std::vector<std::int64_t> OgrFeatureClass::OIDs() const {
    return m_state->OIDs({});
}

std::vector<std::int64_t> OgrFeatureClass::OIDsWhere(const std::string& condition) const {
    return m_state->OIDs(condition);
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

std::vector<std::int64_t> OgrFeatureClass::Existing(std::span<const std::int64_t> oids) const {
    const std::vector<std::int64_t> all = OIDs();
    std::vector<std::int64_t> existing;
    std::set_intersection(all.begin(), all.end(), oids.begin(), oids.end(), std::back_inserter(existing));
    return existing;
}

std::vector<std::int64_t> OgrFeatureClass::Follow(std::span<const std::int64_t> oids, std::size_t generation) const {
    return m_state->Follow(oids, generation);
}

std::size_t OgrFeatureClass::Generation() const {
    return m_state->Generation();
}

}  // namespace wxl::files
