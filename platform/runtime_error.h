#pragma once
#include <cstdint>
#include <exception>
#include <string>

namespace wxl::platform {

/// Numbers of the run-time errors that reports to the user carry.
namespace error_number {
inline constexpr std::int32_t kInvalidCall = 5;        ///< an argument or name that the procedure cannot work with
inline constexpr std::int32_t kOverflow = 6;           ///< a result outside its integer type
inline constexpr std::int32_t kOutOfMemory = 7;        ///< memory could not be had
inline constexpr std::int32_t kSubscript = 9;          ///< an index outside its array
inline constexpr std::int32_t kDivisionByZero = 11;    ///< a divisor of exactly zero
inline constexpr std::int32_t kTypeMismatch = 13;      ///< a text that is not a number, a value of the wrong type
inline constexpr std::int32_t kFileNotFound = 53;      ///< no such file
inline constexpr std::int32_t kDeviceIo = 57;          ///< the file could not be read or written
inline constexpr std::int32_t kFileExists = 58;        ///< the name is taken
inline constexpr std::int32_t kDiskFull = 61;          ///< no space left
inline constexpr std::int32_t kPermissionDenied = 70;  ///< not allowed by the system, or in use
inline constexpr std::int32_t kPathNotFound = 76;      ///< no such folder
inline constexpr std::int32_t kObjectNotSet = 91;      ///< a missing layer, raster, class or other object
}  // namespace error_number

/// A fault inside a procedure. Thrown within it and never past its handler (see Guarded).
class RuntimeError : public std::exception {
public:
    RuntimeError(std::int32_t number, std::string description);

    /// "DESCRIPTION", as shown to the user after a label.
    const char* what() const noexcept override { return Description.c_str(); }

    std::int32_t Number;      ///< error_number
    std::string Description;  ///< what went wrong, with file, field or animal where known
};

/// The usual description of an error number, for faults that have nothing more to say.
std::string DescriptionOf(std::int32_t number);

/// Throws RuntimeError with the usual description of `number`.
[[noreturn]] void Raise(std::int32_t number);

/// Throws RuntimeError with a description of its own.
[[noreturn]] void Raise(std::int32_t number, std::string description);

/// The current exception as a RuntimeError; anything foreign becomes the nearest number. Call inside a catch block.
RuntimeError CurrentError();

}  // namespace wxl::platform
