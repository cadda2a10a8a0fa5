#include "adapters/tracking/position_text.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/coordinate_text.h"
#include "adapters/tracking/number_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace wxl::tracking {

namespace {

using platform::Trim;

bool starts_no_case(std::string_view text, std::string_view start) {
    return platform::EqualNoCase(text.substr(0, start.size()), start);
}

/// What stands between the first of `open` and the last of `close`.
std::optional<std::string_view> inside(std::string_view text, char open, char close) {
    const std::size_t begin = text.find(open);
    const std::size_t end = text.rfind(close);
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin) return std::nullopt;
    return Trim(text.substr(begin + 1, end - begin - 1));
}

std::optional<PositionText> pair_of(std::string_view first, std::string_view second) {
    const auto a = coordinate_from_text(Trim(first));
    const auto b = coordinate_from_text(Trim(second));
    if (!a || !b || (a->IsLatitude() && b->IsLatitude()) || (a->IsLongitude() && b->IsLongitude())) return std::nullopt;
    PositionText position{a->Value, b->Value, std::nullopt};
    if (a->IsLatitude() || b->IsLongitude()) position.Order = PairOrder::kLatitudeFirst;
    if (a->IsLongitude() || b->IsLatitude()) position.Order = PairOrder::kLongitudeFirst;
    return position;
}

/// Two numbers, and perhaps a height, parted by `mark`; longitude first.
std::optional<PositionText> listed(std::string_view text, char mark) {
    std::vector<std::string> parts = platform::Split(text, mark);
    std::erase_if(parts, [](const std::string& part) { return Trim(part).empty(); });
    if (parts.size() < 2 || parts.size() > 4) return std::nullopt;
    auto position = pair_of(parts[0], parts[1]);
    if (position) position->Order = PairOrder::kLongitudeFirst;
    return position;
}

/// The number behind the first of the words.
std::string_view number_behind(std::string_view text, std::string_view word) {
    const std::size_t at = text.find(word);
    const std::size_t colon = at == std::string_view::npos ? at : text.find(':', at);
    if (colon == std::string_view::npos) return {};
    const std::string_view rest = text.substr(colon + 1);
    return Trim(rest.substr(0, rest.find_first_of(",}")));
}

std::optional<PositionText> json_position(std::string_view text) {
    if (const auto list = inside(text, '[', ']')) return listed(*list, ',');
    auto position = pair_of(number_behind(text, "lon"), number_behind(text, "lat"));
    if (!position) position = pair_of(number_behind(text, "lng"), number_behind(text, "lat"));
    if (position) position->Order = PairOrder::kLongitudeFirst;
    return position;
}

bool has_fraction(std::string_view text) {
    return text.find('.') != std::string_view::npos;
}

/// Cut where `mark` stands once.
std::optional<PositionText> parted_once(std::string_view text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    if (at == std::string_view::npos || text.find(mark, at + mark.size()) != std::string_view::npos)
        return std::nullopt;
    return pair_of(text.substr(0, at), text.substr(at + mark.size()));
}

/// "52 12.5 N 5 6.1 E", "N52 12.5 E5 6.1"
std::optional<PositionText> parted_by_letter(std::string_view text) {
    constexpr std::string_view kLetters = "NSEW";
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (kLetters.find(text[i]) == std::string_view::npos) continue;
        const bool leads = kLetters.find(text.front()) != std::string_view::npos;
        if (const auto position = pair_of(text.substr(0, i + (leads ? 0 : 1)), text.substr(i + (leads ? 0 : 1))))
            return position;
    }
    return std::nullopt;
}

}  // namespace

std::optional<PositionText> position_from_text(std::string_view text) {
    text = Trim(text);
    if (const std::size_t end = text.find(';'); starts_no_case(text, "SRID=") && end != std::string_view::npos)
        text = Trim(text.substr(end + 1));
    if (starts_no_case(text, "POINT")) {
        const auto numbers = inside(text, '(', ')');
        return numbers ? listed(*numbers, ' ') : std::nullopt;
    }
    if (text.starts_with("c(")) return listed(inside(text, '(', ')').value_or(""), ',');
    if (text.starts_with('{') || text.starts_with('[')) return json_position(text);
    if (text.starts_with('(') && text.ends_with(')')) text = Trim(text.substr(1, text.size() - 2));
    for (const std::string_view mark : {";", "/", ", "})
        if (const auto position = parted_once(text, mark)) return position;
    // "52,5" is a number.
    if (has_fraction(text))
        if (const auto position = parted_once(text, ",")) return position;
    if (const auto position = parted_by_letter(text)) return position;
    return parted_once(text, " ");
}

std::optional<int> srid_from_text(std::string_view text) {
    constexpr std::string_view kStart = "SRID=";
    text = Trim(text);
    const std::size_t end = text.find(';');
    if (!starts_no_case(text, kStart) || end == std::string_view::npos) return std::nullopt;
    const auto number = number_from_text(Trim(text.substr(kStart.size(), end - kStart.size())));
    if (!number || *number < 1.0 || *number > 999999.0) return std::nullopt;
    return static_cast<int>(*number);
}

bool is_empty_position(std::string_view text) {
    if (starts_no_case(text, "POINT")) return platform::UpperCase(text).find("EMPTY") != std::string::npos;
    if (!text.starts_with("c(")) return false;
    const auto parts = platform::Split(inside(text, '(', ')').value_or(""), ',');
    return std::ranges::all_of(parts, [](const std::string& part) { return is_missing(Trim(part)); });
}

std::optional<double> degrees_of_receiver(double value) {
    const double degrees = std::floor(std::abs(value) / 100.0);
    const double minutes = std::abs(value) - degrees * 100.0;
    if (minutes >= 60.0) return std::nullopt;
    return std::copysign(degrees + minutes / 60.0, value);
}

}  // namespace wxl::tracking
