#pragma once
#include "platform/features.h"
#include "platform/runtime_error.h"
#include "platform/values.h"
#include "utilities/animal_names.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace wxl::movement {

/// The selected fixes, held so that the duplicates of one fix are found without a walk over all others. Fixes are added
/// once, in the order of the selection, under their row number (0, 1, 2 ...). Duplicates that were taken are gone.
class IDuplicateIndex {
public:
    virtual ~IDuplicateIndex() = default;
    virtual void Add(std::size_t row, const platform::IFeature& fix) = 0;

    /// Hands the rows of all duplicates of `kept` to `take`, ascending, and forgets them. RuntimeError where a walk
    /// over all fixes would have met a fault; the duplicates before that fault have been taken then.
    virtual void TakeDuplicates(const platform::IFeature& kept, const std::function<void(std::size_t)>& take) = 0;
};

/// Duplicates by time: fixes of equal Time2 with a higher object ID.
class Time2Index final : public IDuplicateIndex {
public:
    /// @param field index of the field Time2
    explicit Time2Index(int field) : m_field(field) {}
    void Add(std::size_t row, const platform::IFeature& fix) override;
    void TakeDuplicates(const platform::IFeature& kept, const std::function<void(std::size_t)>& take) override;

private:
    struct Unreadable {
        std::size_t Row;
        platform::RuntimeError Error;
    };

    int m_field;
    std::unordered_map<std::int32_t, std::map<std::int64_t, std::size_t>> m_rows;  ///< time -> object ID -> row
    std::optional<Unreadable> m_unreadable;                                        ///< the first such row
};

/// Duplicates by place: fixes with another object ID within a tolerance (straight distance, the bound included).
/// Being within the tolerance does not carry over from neighbour to neighbour: each fix takes its own neighbours only.
class LocationIndex final : public IDuplicateIndex {
public:
    /// @param tolerance map units; 0: exactly equal coordinates
    explicit LocationIndex(double tolerance);
    void Add(std::size_t row, const platform::IFeature& fix) override;
    void TakeDuplicates(const platform::IFeature& kept, const std::function<void(std::size_t)>& take) override;

private:
    /// Column and row of a square cell; whole numbers, kept as doubles because coordinates may be huge.
    struct Cell {
        double X, Y;
        friend bool operator==(const Cell&, const Cell&) = default;
    };
    struct CellHash {
        std::size_t operator()(const Cell& cell) const;
    };
    struct Entry {
        std::size_t Row = 0;
        std::int64_t FID = 0;
        platform::Point Location;
    };

    Cell CellOf(const platform::Point& location) const;
    bool Coincide(const platform::Point& a, const platform::Point& b) const;
    void TakeFromCell(const Cell& cell, const platform::IFeature& kept, const platform::Point& place,
                      std::vector<std::size_t>& taken);

    double m_tolerance;
    double m_cellSize;
    std::unordered_map<Cell, std::vector<Entry>, CellHash> m_cells;
};

/// Duplicates within each animal: an index of its own for the fixes of each.
class AnimalIndex final : public IDuplicateIndex {
public:
    /// @param field index of the field that names the animal; fixes without a name are nobody's duplicates
    /// @param make a new index for one animal
    AnimalIndex(int field, std::function<std::unique_ptr<IDuplicateIndex>()> make)
        : m_field(field), m_make(std::move(make)) {}
    void Add(std::size_t row, const platform::IFeature& fix) override;
    void TakeDuplicates(const platform::IFeature& kept, const std::function<void(std::size_t)>& take) override;

private:
    int m_field;
    std::function<std::unique_ptr<IDuplicateIndex>()> m_make;
    std::map<platform::FieldValue, std::unique_ptr<IDuplicateIndex>, utilities::AnimalLess> m_animals;
};

/// How near two fixes count as the same place, in units of the coordinate system: 1 mm. Where the unit is unknown or
/// the coordinates are degrees only equal coordinates do, which is 0.
double xy_tolerance(const platform::SpatialReference& reference);

}  // namespace wxl::movement
