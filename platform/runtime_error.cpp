#include "platform/runtime_error.h"

#include <filesystem>
#include <new>
#include <stdexcept>
#include <utility>
#include <variant>

namespace wxl::platform {

RuntimeError::RuntimeError(std::int32_t number, std::string description)
    : Number(number), Description(std::move(description)) {}

std::string DescriptionOf(std::int32_t number) {
    switch (number) {
        case error_number::kInvalidCall:
            return "Invalid procedure call or argument";
        case error_number::kOverflow:
            return "Overflow";
        case error_number::kOutOfMemory:
            return "Out of memory";
        case error_number::kSubscript:
            return "Subscript out of range";
        case error_number::kDivisionByZero:
            return "Division by zero";
        case error_number::kTypeMismatch:
            return "Type mismatch";
        case error_number::kFileNotFound:
            return "File not found";
        case error_number::kDeviceIo:
            return "Device I/O error";
        case error_number::kFileExists:
            return "File already exists";
        case error_number::kDiskFull:
            return "Disk full";
        case error_number::kPermissionDenied:
            return "Permission denied";
        case error_number::kPathNotFound:
            return "Path not found";
        case error_number::kObjectNotSet:
            return "Object not set";
        default:
            return "Run-time error " + std::to_string(number);
    }
}

void Raise(std::int32_t number) {
    throw RuntimeError(number, DescriptionOf(number));
}

void Raise(std::int32_t number, std::string description) {
    throw RuntimeError(number, std::move(description));
}

RuntimeError CurrentError() {
    try {
        throw;
    } catch (const RuntimeError& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return {error_number::kOutOfMemory, DescriptionOf(error_number::kOutOfMemory)};
    } catch (const std::length_error&) {
        return {error_number::kOutOfMemory, DescriptionOf(error_number::kOutOfMemory)};
    } catch (const std::out_of_range& error) {
        return {error_number::kSubscript, error.what()};
    } catch (const std::bad_variant_access&) {
        return {error_number::kTypeMismatch, DescriptionOf(error_number::kTypeMismatch)};
    } catch (const std::filesystem::filesystem_error& error) {
        return {error_number::kDeviceIo, error.what()};
    } catch (const std::exception& error) {
        return {error_number::kInvalidCall, error.what()};
    } catch (...) {
        return {error_number::kInvalidCall, DescriptionOf(error_number::kInvalidCall)};
    }
}

}  // namespace wxl::platform
