#include "tests/robustness/hostile_names.h"

#include <algorithm>
#include <array>

namespace wxl::tests {
namespace {

using Names = std::vector<std::string>;

void add(Names& names, const Names& more) {
    names.insert(names.end(), more.begin(), more.end());
}

Names ways_out() {
    return {"..",        ".",         "../x",     "../../x",     "..\\x",        "..\\..\\x",   "a/../../x", "/tmp/x",
            "/",         "//",        "\\",       "\\\\host\\x", "C:\\x",        "C:x",         "a/b",       "a\\b",
            "./x",       "x/.",       "x/..",     "...",         "....",         "..x",         "x..",       "a..b",
            "%2e%2e%2f", "..%2fx",    "..;/x",    "~",           "~root",        "$HOME",       "${HOME}",   "%TEMP%",
            "`x`",       "$(x)",      ";x",       "|x",          "x&",           "&&x",         "x>y",       "<x",
            "x\"y",      "\"",        "'",        "O'Malley",    "x' OR '1'='1", "\"; DROP",    "a,b",       "x=y",
            "*",         "?",         "[a-z]",    "{a,b}",       "K*",           "K?",          "#",         "x#y",
            "/vsimem/x", "/vsizip/x", "file://x", "http://x",    "GPKG:x",       "PG:dbname=x", "MEM:::x",   "@x",
            "-",         "--",        "-x",       "--overwrite", "-rf",          "--out=x",     "+x",        "!x"};
}

Names file_system_names() {
    return {"CON",
            "con",
            "PRN",
            "AUX",
            "NUL",
            "nul",
            "COM1",
            "COM9",
            "com5",
            "LPT1",
            "lpt9",
            "CON.txt",
            "NUL.shp",
            "aux.adf",
            "CLOCK$",
            "CONIN$",
            "prj.adf",
            "hdr.adf",
            "w001001.adf",
            "sta.adf",
            "info",
            "log",
            "x.adf",
            "dblbnd.adf",
            ".x",
            ".",
            "..hidden",
            "x.",
            "x. ",
            " x",
            "x ",
            "  ",
            "\t",
            "x\ty",
            "x.part",
            ".x.1.part",
            ".x.swap",
            ".wxl_run.lock",
            "wxl_run.lock",
            "x.lock",
            "x.shp",
            "x.dbf",
            "x.tif",
            "x.aux.xml",
            "x.tif.aux.xml",
            "x:y",
            "x::$DATA",
            "x:stream",
            "WXL_KDE_ANALYSIS.txt",
            "WXL_KERNEL_SETTINGS.txt",
            "WXL_KDE_ANALYSIS",
            "K1_iso_poly",
            "desktop.ini",
            "Thumbs.db"};
}

Names control_characters() {
    Names names = {"x\ny",
                   "x\r\ny",
                   "\n",
                   "\r",
                   "x\n[PREFIX]\ny",
                   "\x1B[2J",
                   "\x1B]0;title\x07",
                   "\x1B[31mred",
                   "x\x08\x08y",
                   "\x07",
                   "x\x7Fy",
                   "\x9B"
                   "31m",
                   "\xC2\x9B"
                   "31m",
                   "\xC2\x85",
                   "x\x1B[1A\x1B[2Kwxl: done"};
    for (char c = 1; c < 32; ++c) names.push_back(std::string("a") + c);
    return names;
}

Names texts() {
    return {
        "\xE2\x80\xAE"
        "gpj.exe",
        "\xE2\x80\x8F",
        "\xE2\x80\x8E"
        "x",
        "\xE2\x81\xA6x\xE2\x81\xA9",
        "\xE2\x80\x8B",
        "\xEF\xBB\xBF"
        "x",
        "\xC3\xA4\xC3\xB6\xC3\xBC",
        "a\xCC\x88",
        "\xC4\xB0\xC4\xB1",
        "\xE7\x8B\xBC",
        "\xF0\x9F\x90\xBA",
        "\xD7\x96\xD7\x90\xD7\x91",
        "\xFF",
        "\xFE\xFF",
        "\xC0\xAF",
        "\xC0\xAE\xC0\xAE\xC0\xAF",
        "\xE0\x80\xAF",
        "\xED\xA0\x80",
        "\xF4\x90\x80\x80",
        "x\xC3",
        "\x80",
        "\xE2\x82",
        "%s%s%s%n",
        "%d",
        "{}",
        "{0}",
        "{:>1000000}",
        "{{",
        "}}",
        "%",
        "%%",
        "\\n",
        "\\0",
        "\\x1b[2J",
        "1e308",
        "-1",
        "0",
        "00",
        "1",
        "NaN",
        "inf",
        "true",
        "null",
        "1;2",
        "1,5",
        "=1+1",
        "@SUM(1)"};
}

Names long_names() {
    return {std::string(200, 'x'),    std::string(201, 'x'),  std::string(255, 'x'),
            std::string(300, 'x'),    std::string(5000, 'x'), std::string(200, '.'),
            std::string(200, ' '),    std::string(200, '%'),  std::string(199, 'x') + "\xC3\xA4",
            std::string(150, '\xFF'), std::string(300, '/'),  "x" + std::string(250, '.') + "y"};
}

}  // namespace

std::vector<std::string> hostile_names() {
    Names names;
    for (const Names& some : {ways_out(), file_system_names(), control_characters(), texts(), long_names()})
        add(names, some);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::vector<std::string> hostile_file_names() {
    Names names = hostile_names();
    std::erase_if(names, [](const std::string& name) {
        return name.find('/') != std::string::npos || name.size() > 200 || name == "." || name == "..";
    });
    return names;
}

}  // namespace wxl::tests
