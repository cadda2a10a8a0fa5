#include "adapters/gdal/grid_fence.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <ogr_srs_api.h>
#include <proj.h>
#include <string_view>
#include <system_error>
#include <utility>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

bool& elsewhere_allowed() {
    static bool allowed = true;
    return allowed;
}

std::string& refused() {
    static std::string name;
    return name;
}

/// Whether a file lies in one of the folders that PROJ searches.
bool is_projs_own(const std::string& name) {
    const fs::path folder = fs::path(name).lexically_normal().parent_path();
    std::string_view folders = proj_info().searchpath;
    while (!folders.empty()) {
        const std::string_view next = folders.substr(0, folders.find(':'));
        if (!next.empty() && folder == fs::path(next).lexically_normal()) return true;
        folders.remove_prefix(std::min(next.size() + 1, folders.size()));
    }
    return false;
}

std::FILE* file_of(PROJ_FILE_HANDLE* handle) {
    return reinterpret_cast<std::FILE*>(handle);
}

PROJ_FILE_HANDLE* open_file(PJ_CONTEXT*, const char* name, PROJ_OPEN_ACCESS access, void*) {
    const bool own = is_projs_own(name);
    std::error_code none;
    const bool isRefused = !own && !elsewhere_allowed();
    // PROJ tries all its folders and the present one: a grid that is nowhere is PROJ's to tell.
    if (isRefused && fs::exists(fs::symlink_status(name, none))) refused() = name;
    if (access != PROJ_OPEN_ACCESS_READ_ONLY || isRefused) return nullptr;
    return reinterpret_cast<PROJ_FILE_HANDLE*>(std::fopen(name, "rb"));
}

std::size_t read_file(PJ_CONTEXT*, PROJ_FILE_HANDLE* handle, void* buffer, std::size_t size, void*) {
    return std::fread(buffer, 1, size, file_of(handle));
}

std::size_t write_nothing(PJ_CONTEXT*, PROJ_FILE_HANDLE*, const void*, std::size_t, void*) {
    return 0;
}

int seek_file(PJ_CONTEXT*, PROJ_FILE_HANDLE* handle, long long offset, int whence, void*) {
    return std::fseek(file_of(handle), static_cast<long>(offset), whence) == 0 ? 1 : 0;
}

unsigned long long tell_file(PJ_CONTEXT*, PROJ_FILE_HANDLE* handle, void*) {
    return static_cast<unsigned long long>(std::ftell(file_of(handle)));
}

void close_file(PJ_CONTEXT*, PROJ_FILE_HANDLE* handle, void*) {
    std::fclose(file_of(handle));
}

int file_exists(PJ_CONTEXT*, const char* name, void*) {
    std::error_code none;
    return (is_projs_own(name) || elsewhere_allowed()) && fs::exists(name, none) ? 1 : 0;
}

int make_no_folder(PJ_CONTEXT*, const char*, void*) {
    return 0;
}

int remove_nothing(PJ_CONTEXT*, const char*, void*) {
    return 0;
}

int rename_nothing(PJ_CONTEXT*, const char*, const char*, void*) {
    return 0;
}

constexpr PROJ_FILE_API kFiles = {1,          open_file,   read_file,      write_nothing,  seek_file,     tell_file,
                                  close_file, file_exists, make_no_folder, remove_nothing, rename_nothing};

/// GDAL's own context of PROJ is made of the default one, without its functions for files, and is nowhere to be had but
/// here: PROJ asks for its database before it reads a coordinate system. Finds nothing, so that PROJ searches.
const char* find_nothing(PJ_CONTEXT* context, const char*, void*) {
    proj_context_set_fileapi(context, &kFiles, nullptr);
    return nullptr;
}

}  // namespace

void SetGridsElsewhereAllowed(bool allowed) {
    elsewhere_allowed() = allowed;
    [[maybe_unused]] static const bool watched = [] {
        proj_context_set_file_finder(nullptr, find_nothing, nullptr);
        OSRCleanup();
        return true;
    }();
}

std::string TakeRefusedGrid() {
    return std::exchange(refused(), {});
}

}  // namespace wxl::files
