#include "apps/cli/fix_rows.h"

#include "analysis/position_error.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using platform::Field;
using platform::FieldType;
using platform::FieldValue;
using tracking::TrackingFix;

constexpr std::size_t kLongestText = 254;  // of a shapefile, in bytes

/// Width of Time2: 10 digits, which programs take for 32 bits where they can, unless a time lies before 1970 or after
/// 2286.
int width_of_seconds(const tracking::Tracking& data) {
    std::size_t width = 10;
    for (const TrackingFix& fix : data.Fixes)
        if (fix.HasTime() && (fix.Seconds < 0 || fix.Seconds > 9999999999))
            width = std::max(width, std::to_string(fix.Seconds).size());
    return static_cast<int>(width);
}

int longest_of(const std::vector<std::string>& names) {
    std::size_t longest = 1;
    for (const std::string& name : names) longest = std::max(longest, name.size());
    return static_cast<int>(std::min(longest, kLongestText));
}

/// As many bytes as fit, and no part of a letter.
bool cut_text(std::string& text) {
    if (text.size() <= kLongestText) return false;
    std::size_t cut = kLongestText;
    while ((static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
    text.resize(cut);
    return true;
}

}  // namespace

FixRows::FixRows(ImportedFixes& fixes, tracking::LayerFormat format, Columns columns)
    : m_fixes(fixes), m_format(format), m_hasTimes(fixes.HasTimes()) {
    AddOwnFields();
    if (columns != Columns::kOwn) AddOtherFields(columns);
    m_hasOthers = !m_taken.empty();
    m_values.resize(m_fields.size());
}

void FixRows::AddOwnFields() {
    const auto& data = m_fixes.Data;
    const bool isSplit = !m_fixes.Groups.empty();
    m_fields.push_back({"animal", FieldType::kText, longest_of(isSplit ? m_fixes.Groups : data.Animals), 0});
    if (isSplit) {
        m_fields.push_back({"individual", FieldType::kText, longest_of(m_fixes.Individual), 0});
        m_fields.push_back({"subset", FieldType::kText, longest_of(m_fixes.Key), 0});
    }
    if (m_hasTimes) {
        m_fields.push_back({"Time2", FieldType::kInteger, width_of_seconds(data), 0});
        m_fields.push_back({"Date", FieldType::kText, 10, 0});
        m_fields.push_back({"Time1", FieldType::kText, 8, 0});
    }
    m_own = m_fields.size();
}

void FixRows::AddOtherFields(Columns columns) {
    for (const Field& field : m_fields) m_wantedNames.push_back(field.Name);
    for (std::size_t i = 0; i < m_fixes.Data.Others.size(); ++i) {
        const Field field = FieldOf(m_fixes.Data.Others[i]);
        if (columns == Columns::kErrors && !analysis::tells_position_error(field)) continue;
        m_taken.push_back(i);
        m_wantedNames.push_back(field.Name);
        m_fields.push_back(field);
    }
    const auto names = tracking::field_names_for(m_format, m_wantedNames);
    for (std::size_t i = 0; i < m_fields.size(); ++i) m_fields[i].Name = names[i];
}

Field FixRows::FieldOf(const tracking::OtherColumn& column) const {
    const tracking::ColumnType& type = column.Type;
    Field field{column.Name, type.Type(), 0, 0};
    if (m_format != tracking::LayerFormat::kShapefile) return field;
    // A Windows-1252 letter takes up to three bytes in UTF-8.
    if (field.Type == FieldType::kText)
        field.Length = static_cast<int>(std::clamp<std::size_t>(type.Bytes() * 3 / 2 + 1, 1, kLongestText));
    if (field.Type == FieldType::kInteger) field.Length = static_cast<int>(std::max<std::size_t>(type.Digits(), 1));
    if (field.Type == FieldType::kDouble && !type.HasExponent() && type.Digits() + type.Decimals() < 15) {
        field.Precision = static_cast<int>(type.Decimals());
        field.Length = static_cast<int>(type.Digits() + type.Decimals() + 2);
    }
    return field;
}

std::vector<std::string> FixRows::Renamed() const {
    std::vector<std::string> renamed;
    for (std::size_t i = m_own; i < m_fields.size(); ++i)
        if (m_fields[i].Name != m_wantedNames[i])
            renamed.push_back(fmt::format("\"{}\" is {}", m_wantedNames[i], m_fields[i].Name));
    return renamed;
}

void FixRows::SetOwnValues(std::size_t i) {
    const TrackingFix& fix = m_fixes.Data.Fixes[i];
    std::size_t at = 0;
    if (m_fixes.Groups.empty()) {
        m_values[at++] = m_fixes.Data.Animals[fix.Animal];
    } else {
        const std::uint32_t group = m_fixes.GroupOf[i];
        m_values[at++] = m_fixes.Groups[group];
        m_values[at++] = m_fixes.Individual[group];
        m_values[at++] = m_fixes.Key[group];
    }
    if (!m_hasTimes) return;
    if (!fix.HasTime()) {
        for (; at < m_own; ++at) m_values[at] = {};
        return;
    }
    m_values[at++] = fix.Seconds;
    m_values[at++] = tracking_times::date_text(fix.Seconds);
    m_values[at++] = tracking_times::time_of_day_text(fix.Seconds);
}

void FixRows::SetOtherValues(const TrackingFix& fix) {
    m_fixes.Data.ReadRow(fix, m_others);
    for (std::size_t i = 0; i < m_taken.size(); ++i) {
        FieldValue& value = m_values[m_own + i];
        value = std::move(m_others[m_taken[i]]);
        if (m_format != tracking::LayerFormat::kShapefile) continue;
        if (auto* text = std::get_if<std::string>(&value); text != nullptr && cut_text(*text)) ++m_cut;
    }
}

void FixRows::PutAll(tracking::ILayerWriter& writer) {
    for (std::size_t i = 0; i < m_fixes.Data.Fixes.size(); ++i) {
        SetOwnValues(i);
        if (m_hasOthers) SetOtherValues(m_fixes.Data.Fixes[i]);
        writer.Put({m_fixes.Data.Fixes[i].X, m_fixes.Data.Fixes[i].Y}, m_values);
    }
}

}  // namespace wxl::cli
