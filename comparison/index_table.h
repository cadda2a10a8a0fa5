#pragma once
// The indices of a comparison as people read them: by name, table by table, largest first.

#include "comparison/compared_ranges.h"
#include "platform/text_table.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::comparison {

/// An index, from i to j and from j to i.
struct IndexKind {
    const char* Name;   ///< "ba"
    const char* Title;  ///< "BA"
    double OverlapIndices::*Forth;
    double OverlapIndices::*Back;
    bool OfRanges;  ///< depends on the percentage even for whole distributions

    bool IsSymmetric() const { return Forth == Back; }

    /// Whether small values are those of near pairs.
    bool IsDistance() const { return Forth == &OverlapIndices::Hd; }
};

/// ba, vi, udoi, phr, hr, hd.
std::span<const IndexKind> index_kinds();

/// The index of a name in any case; null where there is none.
const IndexKind* index_kind(std::string_view name);

/// Values are told to six digits: they are no more exact.
double told(double value);
std::string told_text(double value);

/// Nothing where an animal has no distribution.
std::optional<double> told_value(const PairOverlap& pair, double OverlapIndices::*index);

/// One table: an index, at a percentage, of whole distributions or conditional.
struct IndexSection {
    const IndexKind* Kind;
    double Percent;
    bool Conditional;

    bool Holds(const PairOverlap& pair) const { return pair.Percent == Percent && pair.Conditional == Conditional; }

    /// "HR at 95 %, conditional"
    std::string Title() const;
};

/// The tables of these indices. An index of whole distributions that no percentage changes has one.
std::vector<IndexSection> index_sections(const ComparedRanges& ranges, const std::vector<const IndexKind*>& indices);

/// range_of, animal, index, percent, conditional, value: both directions of each pair. Where an index does not depend
/// on the percentage, that cell is empty and the row stands once.
platform::TextTable long_table(const ComparedRanges& ranges, const std::vector<const IndexKind*>& indices);

/// A value and whose it is.
struct RankedPair {
    double Value;
    std::uint32_t RangeOf;
    std::uint32_t Animal;
};

/// The pairs of two animals of a table, the nearest first; of an index that is not symmetric both directions.
std::vector<RankedPair> ranked_pairs(const ComparedRanges& ranges, const IndexSection& section);

/// The table of a section for some animals, row by row in their order; nothing where there is no value.
/// A pair without a record shares nothing.
std::vector<std::optional<double>> index_matrix(const ComparedRanges& ranges, const IndexSection& section,
                                                std::span<const std::uint32_t> animals);

/// All animals in their own order.
std::vector<std::uint32_t> all_animals(const ComparedRanges& ranges);

}  // namespace wxl::comparison
