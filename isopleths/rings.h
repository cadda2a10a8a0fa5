#pragma once
// Rings, and polygons made of rings that do not cross each other.

#include "platform/values.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wxl::isopleths {

/// A closed line: first and last vertex equal, at least four vertices.
using Ring = std::vector<platform::Point>;

/// Area within the ring in square map units, positive when it runs clockwise.
double clockwise_area(std::span<const platform::Point> ring);

/// Cuts closed lines apart where they come back to one of their vertices: the pieces are closed and touch nothing of
/// themselves. What lies within an odd number of rings stays the same; a piece that only goes to and fro is left out.
std::vector<Ring> simple_rings(const std::vector<Ring>& rings);

/// Sorts rings by descending area; rings of equal area from west to east, then from south to north. A ring then comes
/// after every ring that it lies in.
void sort_by_area(std::vector<Ring>& rings);

/// How a ring of a set lies among the others.
struct Nesting {
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::size_t Depth = 0;       ///< how many rings it lies in
    std::size_t Parent = kNone;  ///< the innermost of them
};

/// The nesting of rings sorted by descending area that may touch but not cross. Every ring looks from one of its
/// vertices to the west and counts whom it meets, within a narrow band of the map: nearly linear in the vertices.
std::vector<Nesting> nesting_of(std::span<const Ring> rings);

/// The polygons of what lies within an odd number of the rings, given by descending area, each an outer ring
/// (clockwise) with its holes.
std::vector<platform::Geometry> polygons_of(std::vector<Ring> rings);

/// Area in square map units of a polygon whose outer rings run clockwise and whose holes the other way.
double area_of(const platform::Geometry& polygon);

/// How many outer rings a shape of polygons has: those that run clockwise.
std::int32_t outer_rings_of(const platform::Geometry& polygon);

/// One shape of several polygons; a null shape of none.
platform::Geometry collected(std::vector<platform::Geometry> polygons);

}  // namespace wxl::isopleths
