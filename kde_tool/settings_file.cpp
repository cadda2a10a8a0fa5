#include "kde_tool/settings_file.h"

#include "analysis/settings_text.h"
#include "kde_tool/frmKDE.h"
#include "platform/checked.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>
#include <utility>

namespace wxl::kde_tool {

namespace {

/// Lines of a settings file being written.
class LineWriter {
public:
    void Line(std::string_view text) {
        m_text += text;
        m_text += "\r\n";
    }
    void Item(std::string_view key, std::string_view value) {
        Line(key);
        Line(value);
    }
    void ItemUnlessEmpty(std::string_view key, std::string_view value) {
        if (!value.empty()) Item(key, value);
    }
    const std::string& Text() const { return m_text; }

private:
    std::string m_text;
};

void write_bandwidth(const analysis::Settings& settings, LineWriter& out) {
    switch (settings.Method) {
        case analysis::BandwidthMethod::kLscv:
            return out.Item("[LSCV]", "TRUE");
        case analysis::BandwidthMethod::kBcv:
            return out.Item("[BCV]", "TRUE");
        case analysis::BandwidthMethod::kHref:
            return out.Item("[HREF]", "TRUE");
        case analysis::BandwidthMethod::kManual:
            return out.Item("[MANUAL]", settings.Bandwidths.Text);
        case analysis::BandwidthMethod::kProportion:
        case analysis::BandwidthMethod::kAdHoc:
            return;  // no part of the file
    }
}

void write_extent(const analysis::Settings& settings, LineWriter& out) {
    out.Line("[EXTENT]");
    switch (settings.Mode) {
        case analysis::ExtentMode::kFull:
            return out.Item("FULL", settings.Buffer.Text);
        case analysis::ExtentMode::kMinimum:
            return out.Line("MIN");
        case analysis::ExtentMode::kReference:
            return out.Item("REF", settings.ReferenceName);
    }
}

std::string check_text(bool isChosen) {
    return isChosen ? "1" : "0";
}

void write_isopleths(const analysis::Settings& settings, LineWriter& out) {
    out.Item("[ISO]", check_text(settings.Isopleths));
    if (!settings.Isopleths) return;
    out.Line(settings.Percentages.Text);
    for (const bool isChosen : {settings.Lines, settings.Polygons, settings.Donuts}) out.Line(check_text(isChosen));
}

constexpr std::array<std::string_view, 15> kKeys = {"[RESCALE]", "[KERNEL]",  "[FORM]",      "[LSCV]",   "[BCV]",
                                                    "[HREF]",    "[MANUAL]",  "[OUTFOLDER]", "[PREFIX]", "[CELLSIZE]",
                                                    "[SCALING]", "[VERBOSE]", "[EXTENT]",    "[ISO]",    "[SILENT]"};

/// Lines of a settings file being read, each as upper-case UTF-8.
class LineReader {
public:
    explicit LineReader(std::string_view bytes) : m_rest(bytes) {}

    bool AtEnd() const { return m_rest.empty(); }

    /// The next line; nothing at the end of the file.
    std::optional<std::string> Next() {
        if (AtEnd()) return std::nullopt;
        const std::size_t end = std::min(m_rest.find_first_of("\r\n"), m_rest.size());
        const std::string_view line = m_rest.substr(0, end);
        m_rest.remove_prefix(end);
        if (m_rest.starts_with("\r\n"))
            m_rest.remove_prefix(2);
        else if (!m_rest.empty())
            m_rest.remove_prefix(1);
        return platform::UpperCase(platform::FromWindows1252(line));
    }

private:
    std::string_view m_rest;
};

/// A value as a check state: numbers that round to 0 or 1, nothing else.
std::optional<int> check_state(const std::string& value) {
    if (!platform::IsNumeric(value)) return std::nullopt;
    const double rounded = platform::round_half_even(platform::NumberFromText(value), 0);
    if (rounded == 0.0) return 0;
    if (rounded == 1.0) return 1;
    return std::nullopt;
}

void set_check(platform::CheckBox& box, const std::string& value) {
    if (const auto state = check_state(value)) box.Value = *state;
}

void set_number(platform::TextBox& box, const std::string& value) {
    if (platform::IsNumeric(value)) box.Text = value;
}

/// Walks the lines of a settings file. A value line becomes the current line and is compared with the keys in its turn;
/// the end of the file is asked for before the comparison, so that the last line is never a key.
class SettingsReader {
public:
    SettingsReader(std::string_view bytes, frmKDE& form) : m_lines(bytes), m_form(form) {}

    SettingsRead Read() {
        Advance();
        while (!m_lines.AtEnd()) {
            try {
                Item();
            } catch (const std::exception&) {
                continue;  // A step that fails is skipped.
            }
        }
        if (m_prefix) {
            m_form.txtR.Text = *m_prefix;
            m_form.txtR_Change();
        }
        m_form.RefreshEnabledStates();
        return m_read;
    }

private:
    /// The next line as the current one; at the end of the file the current line stays.
    const std::string& Advance() {
        if (auto line = m_lines.Next()) m_line = *std::move(line);
        return m_line;
    }

    void Item() {
        const std::string key = m_line;
        const std::string& value = Advance();
        if (std::ranges::find(kKeys, key) != kKeys.end()) ++m_read.Settings;
        if (key == "[RESCALE]") set_check(m_form.chkRescale, value);
        if (key == "[KERNEL]") Kernel(value);
        if (key == "[FORM]") KernelForm(value);
        if (key == "[LSCV]") Bandwidth(value, m_form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
        if (key == "[BCV]") Bandwidth(value, m_form.optBE_BCV, &frmKDE::optBE_BCV_Click);
        if (key == "[HREF]") Bandwidth(value, m_form.optBE_HREF, &frmKDE::optBE_HREF_Click);
        if (key == "[MANUAL]") Manual(value);
        if (key == "[OUTFOLDER]") OutputFolder(value);
        if (key == "[PREFIX]" && !value.empty()) m_prefix = value;
        if (key == "[CELLSIZE]") CellSize(value);
        if (key == "[SCALING]") set_number(m_form.txtScaling, value);
        if (key == "[VERBOSE]") set_check(m_form.chkVerbose, value);
        if (key == "[EXTENT]") Extent(value);
        if (key == "[ISO]") Isopleths(value);
        if (key == "[SILENT]") m_form.chkSilent.Value = value == "TRUE" ? 1 : 0;
    }

    void Choose(platform::OptionButton& option, void (frmKDE::*click)()) {
        option.Value = true;
        (m_form.*click)();
    }

    void Kernel(const std::string& value) {
        if (value == "TRUE") Choose(m_form.optFixed, &frmKDE::optFixed_Click);
        if (value == "FALSE") Choose(m_form.optAdaptive, &frmKDE::optAdaptive_Click);
    }

    /// The name of the form holds small letters and values arrive in capitals, so that loading never changes it.
    void KernelForm(const std::string& value) {
        if (value == kGaussianForm) m_form.cmbKernelForm.Select(value);
    }

    void Bandwidth(const std::string& value, platform::OptionButton& option, void (frmKDE::*click)()) {
        if (value == "TRUE") Choose(option, click);
    }

    void CellSize(const std::string& value) {
        if (analysis::cell_size_of(value).OfBandwidths)
            m_form.txtCellSize.Text = analysis::kFittingCells;
        else
            set_number(m_form.txtCellSize, value);
    }

    void Manual(const std::string& value) {
        if (value != "TRUE") return;
        Choose(m_form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
        m_form.txtBW.Text = value;
    }

    void OutputFolder(const std::string& value) {
        if (value.empty()) return;
        if (m_form.FolderExists(value))
            m_form.SetOutputFolder(value);
        else
            m_read.Note += "Output folder does not exist, therefore setting not changed.\r";
    }

    void Extent(const std::string& value) {
        // The value is the present line, which Advance replaces.
        const std::string mode = value;  // NOLINT(performance-unnecessary-copy-initialization)
        if (mode == "FULL") {
            Choose(m_form.optFull, &frmKDE::optFull_Click);
            set_number(m_form.txtBuffer, Advance());
        }
        if (mode == "MIN") Choose(m_form.optSmall, &frmKDE::optSmall_Click);
        if (mode == "REF") {
            Choose(m_form.optExtRef, &frmKDE::optExtRef_Click);
            if (m_lines.AtEnd()) return;
            const std::string& layer = Advance();
            if (m_form.LayerInMap(layer)) m_form.cmbExtRef.Select(layer);
        }
    }

    void Isopleths(const std::string& value) {
        set_check(m_form.chkBnds, value);
        if (value != "1") return;
        if (!m_lines.AtEnd()) m_form.txtBnds.Text = Advance();
        for (platform::CheckBox* box : {&m_form.chkLines, &m_form.chkPolys, &m_form.chkDonuts})
            if (!m_lines.AtEnd()) set_check(*box, Advance());
    }

    LineReader m_lines;
    frmKDE& m_form;
    std::string m_line;
    SettingsRead m_read;

    /// The last prefix of the file; applied once, so that a file full of long prefixes warns once.
    std::optional<std::string> m_prefix;
};

}  // namespace

std::string SettingsFileBytes(const analysis::Settings& settings) {
    LineWriter out;
    out.Item("[RESCALE]", check_text(settings.Rescale));
    out.Item("[KERNEL]", settings.FixedKernel ? "True" : "False");
    out.Item("[FORM]", kGaussianForm);
    write_bandwidth(settings, out);
    out.ItemUnlessEmpty("[OUTFOLDER]", settings.OutputFolder);
    out.ItemUnlessEmpty("[PREFIX]", settings.Prefix);
    out.ItemUnlessEmpty("[CELLSIZE]", settings.Cells.Text);
    out.ItemUnlessEmpty("[SCALING]", settings.ScalingFactor.Text);
    out.Item("[VERBOSE]", check_text(settings.Verbose));
    write_extent(settings, out);
    write_isopleths(settings, out);
    out.Item("[SILENT]", settings.Silent ? "TRUE" : "FALSE");
    return platform::ToWindows1252(out.Text());
}

SettingsRead ReadSettings(std::string_view bytes, frmKDE& form) {
    return SettingsReader(bytes, form).Read();
}

}  // namespace wxl::kde_tool
