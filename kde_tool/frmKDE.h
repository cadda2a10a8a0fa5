#pragma once
#include "analysis/analysis.h"
#include "analysis/animal_fixes.h"
#include "analysis/convex_polygon_layer.h"
#include "analysis/range_package.h"
#include "analysis/record.h"
#include "analysis/setting_problems.h"
#include "analysis/statistics.h"
#include "analysis/summary_table.h"
#include "kde_tool/form_advice.h"
#include "kde_tool/profile_plot.h"
#include "kde_tool/result_panel.h"
#include "kde_tool/run_tally.h"
#include "kde_tool/statistics_tables.h"
#include "platform/controls.h"
#include "platform/services.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace wxl::utilities {
class Utilities;
}

namespace wxl::kde_tool {

/// The only entry of cmbKernelForm.
inline constexpr const char* kGaussianForm = "Gaussian (bivariate normal)";

/// What a run could not do with a field, in a sentence, under the name of the field's control.
struct FieldProblem {
    std::string Control;
    std::string Text;
};

/// The form "Kernel Density Estimation": the settings of a batch analysis, its statistics tables and its run.
///
/// The controls are plain values. Press it as a user does: change a control, then call its handler; an option button is
/// chosen by `Value = true` and its Click, which clears the other buttons of its group. Call Form_Load once first.
/// Handlers report their faults in message boxes and never throw.
class frmKDE {
public:
    /// The services and the Utilities (connected to the application) must outlive the form.
    frmKDE(const platform::Services& services, utilities::Utilities& geodata);
    frmKDE(const frmKDE&) = delete;
    frmKDE& operator=(const frmKDE&) = delete;

    const std::string Caption = "Kernel Density Estimation";
    bool Visible = true;  ///< false after btnExit

    /// Fixes at one place are asked about only where a search needs them apart, with their numbers.
    bool AsksSearchesOnly = false;

    /// The layer and its selection do not change while the form is open: the fixes that a page read serve the run too.
    bool KeepsFixes = false;

    /// Format of the rasters that a run writes: "GRID" or "GTiff".
    std::string RasterFormat = "GRID";

    /// How far kernels reach: "" for four bandwidths, "whole", or a number of bandwidths.
    std::string Reach;

    /// The bandwidth is the ad hoc one, whatever button is chosen, and a range may be in so many parts; nothing: it is
    /// that of the button.
    std::optional<std::int32_t> AdHocParts;

    /// Percentages of the fixes, a minimum convex polygon for each; empty: none are wanted.
    analysis::TypedNumbers ConvexPercentages;

    /// The SQL condition by which the selected fixes were chosen; "" where there is none.
    std::string Where;

    /// A run spreads its datasets over sub-folders of the output folder, one for every so many animals; 0: it does not.
    std::size_t AnimalsPerSubfolder = 0;

    /// What the desktop adds to the map; null where there is none. Set before Form_Load.
    const IFormAdvice* Advice = nullptr;

    /// The page that the last run wrote, "" where it wrote none; empty where no pages are written.
    std::function<std::filesystem::path()> WrittenPage;

    // All pages
    platform::Tab SSTab1{{"Input Data", "Kernel Settings", "Bandwidth", "Output Options"}};
    platform::TextBox txtStatus;
    platform::ProgressBar PBar;
    platform::Button btnOK{"OK"};
    platform::Button btnExit{"Exit"};
    platform::Button btnLoadSettings{"Load Settings"};
    platform::Button btnSaveSettings{"Save Settings"};
    platform::Button btnSuggest{"Suggest"};
    platform::Button btnLastSettings{"Last Settings", false};
    ResultPanel Panel;
    std::vector<FieldProblem> Problems;  ///< in the order of the pages, see CheckFields
    std::string FocusOn;                 ///< a control that is to get the keyboard; whoever draws the form clears it
    platform::CheckBox chkSilent{"Silent mode"};

    // Page "Input Data", frames "Input" and "Independence of observations"
    platform::Label lblPntL{"Point layer:"};
    platform::ComboBox cmbPntL;
    platform::Label lblDegrees;  ///< a notice for a layer in degrees; "" for other layers and without a map
    platform::Button btnReproject{"Reproject to UTM", false};
    platform::CheckBox chkUseSel{"Use selected features only"};
    platform::Label lblUIDFLD{"Unique animal ID field for batch processing:"};
    platform::ComboBox cmbUIDFLD;
    platform::Button btnCalcIO{"Calculate"};
    platform::DataGrid datagridIO;
    platform::Button btnIOSave{"Save As..."};
    platform::Label lblIO1{"Schoener Index: value < 1.6 or > 2.4 indicates significant autocorrelation."};
    platform::Label lblIO2{"Swihart and Slade Index: value > 0.6 indicates significant autocorrelation."};

    // Page "Kernel Settings", frames "Standardization" and "Kernel parameters"
    platform::CheckBox chkRescale{"Rescale to unit variance"};
    platform::DataGrid datagridVar;
    platform::Label lblVar{
        "Rescaling to unit variance is advisable where the standard deviations of x and y differ strongly "
        "(ratio far from 1)."};
    platform::OptionButton optFixed{"Fixed kernel", true};
    platform::OptionButton optAdaptive{"Adaptive kernel"};
    platform::Label lblKernelForm{"Kernel form:"};
    platform::ComboBox cmbKernelForm;

    // Page "Bandwidth", frame "Bandwidth Selection"
    platform::OptionButton optBE_LSCV{"LSCV (Least Squares Cross Validation)"};
    platform::OptionButton optBE_BCV{"BCV (Biased Cross Validation)"};
    platform::OptionButton optBE_HREF{"Reference bandwidth (see table below)", true};
    platform::OptionButton optBE_MANUAL{"User defined (unscaled constant across animals):"};
    platform::TextBox txtBW;
    platform::OptionButton optPropHref{"Proportion(s) of reference bandwidth:"};
    platform::TextBox txtPropHref{"0.2, 0.4, 0.6, 0.8, 1.0"};
    platform::DataGrid datagridHref;
    ProfilePlot plotProfile;  ///< the search of the animal in the chosen row, while this page is in sight

    // Page "Output Options", frames "Output", "Isopleths" and "Extents"
    platform::Label lblOutFolder{"Output folder (a new, empty folder is strongly recommended):"};
    platform::TextBox txtOutFolder;  ///< shows the output folder; see SetOutputFolder
    platform::Button btnFolder{"Browse..."};
    platform::Label lblR{"Raster name prefix:"};
    platform::TextBox txtR;
    platform::Label lblCellSize{"Raster cell size (coordinate system units):"};
    platform::TextBox txtCellSize;
    platform::Label lblScaling{"Scaling factor (multiplier):"};
    platform::TextBox txtScaling{"1000000"};
    platform::CheckBox chkVerbose{"Write verbose analysis log file"};
    platform::CheckBox chkAddToMap{"Add results to map", 1};
    platform::CheckBox chkHtml{"Write an HTML page of the results"};
    platform::CheckBox chkGpkg{"Write all ranges into one GeoPackage"};
    platform::CheckBox chkBnds{"Isopleths (%):"};
    platform::TextBox txtBnds{"95, 90, 50"};
    platform::CheckBox chkLines{"Lines"};
    platform::CheckBox chkPolys{"Polygons"};
    platform::CheckBox chkDonuts{"Donut polygons"};
    platform::OptionButton optFull{
        "Every UD is calculated at the full extent of the input point layer plus this buffer:", true};
    platform::TextBox txtBuffer{"2000"};
    platform::Label lblBuffer;  ///< the buffer that a run will use, see CheckFields
    platform::OptionButton optSmall{"Minimize the extent of each UD"};
    platform::OptionButton optExtRef{"Every UD is calculated at the same extent as this raster layer:"};
    platform::ComboBox cmbExtRef;

    /// Fills the lists and sets the first enabled states. The first point layer is chosen, as by a click.
    void Form_Load();

    // Option changes
    void chkBnds_Click();
    void optFixed_Click();
    void optAdaptive_Click();
    void optBE_LSCV_Click();
    void optBE_BCV_Click();
    void optBE_HREF_Click();
    void optBE_MANUAL_Click();
    void optPropHref_Click();
    void optFull_Click();
    void optSmall_Click();
    void optExtRef_Click();

    /// A point layer was chosen: fills the list of ID fields; the independence and variance tables of the previous
    /// layer are cleared.
    void cmbPntL_Click();

    /// Another ID field, or other features. The tables stay until they are computed anew; the plot is cleared.
    void cmbUIDFLD_Click();
    void chkUseSel_Click();

    /// Cuts the prefix to its first 6 characters, with a warning.
    void txtR_Change();

    /// The page SSTab1.Current was chosen after `previousTab`: the variance and reference bandwidth tables are filled
    /// for the chosen layer and ID field, the largest reference bandwidth and the suggested buffer are updated.
    void SSTab1_Click(int previousTab);

    /// Another row of the reference bandwidths was chosen: its animal's search is plotted.
    void datagridHref_Click();

    // Buttons

    /// Adds a copy of the chosen layer in its UTM zone to the map and chooses that, with the same ID field.
    void btnReproject_Click();
    void btnCalcIO_Click();
    void btnIOSave_Click();
    void btnSaveSettings_Click();

    /// Reads a settings file into the controls; the panel tells when it holds no setting. Nothing while a run is in
    /// progress.
    void btnLoadSettings_Click();

    /// The same with this file; whether it could be read.
    bool LoadSettings(const std::filesystem::path& file);
    void btnFolder_Click();

    /// Fills in what suits the map: the highlighted point layer, the field that looks like the animals' names, a cell
    /// size, 95 and 50 % isopleths as polygons, the smallest extent. Nothing while a run is in progress.
    void btnSuggest_Click();

    /// Fills in what the project ran last; its layer and field too where they are in the map.
    void btnLastSettings_Click();

    /// Closes the form. During a run it asks whether to stop that instead, which happens after the present
    /// distribution.
    void btnExit_Click();

    /// Says of each field what a run could not do with it, and which buffer a run will use. Empty fields are told once
    /// OK was pressed. Nothing while a run is in progress.
    void CheckFields();

    /// What is wrong with a control's field, or "".
    std::string ProblemOf(std::string_view control) const;

    /// CheckFields, empty fields too; turns to the page of the first problem and asks for the keyboard there. For
    /// whoever draws the form, when OK is pressed.
    void FocusOnFirstProblem();

    /// Runs the batch analysis. Nothing while a run is in progress.
    void btnOK_Click();

    // Groups of controls on and off: Enabled and the background colour
    void DisableIso();
    void EnableIso();
    void DisableBW();
    void EnableBW();
    void EnableBW2();
    void DisableBW2();
    void DisableBuffer();
    void EnableBuffer();
    void DisableExtRef();
    void EnableExtRef();

    /// Keeps the folder (UTF-8) as the output folder and shows it in txtOutFolder.
    void SetOutputFolder(const std::string& folder);

    /// The output folder as chosen or loaded; "" when there is none.
    const std::string& OutputFolder() const { return m_outFolder; }

    /// Where the output folder lies on disk: see analysis::output_folder.
    std::filesystem::path OutputFolderPath() const;

    /// Largest reference bandwidth in map units when its table was last filled, for whichever layer and field; else 0.
    double LargestReferenceBandwidth() const { return m_largestHref; }

    /// Writes the settings file (an older file of that name is replaced). RuntimeError when it cannot be written.
    void SaveSettings(const std::filesystem::path& file) const;

    /// The chosen point layer; RuntimeError when none is chosen or it has left the map.
    platform::Layer PointLayer() const;

    /// The points of the chosen layer by the chosen ID field; RuntimeError when either is missing.
    analysis::GroupedFixes ReadFixes() const;

    /// ReadFixes for the run, which keeps them: hands over what a visit of a page kept.
    analysis::GroupedFixes TakeFixes();

    /// Fills the independence table.
    void FillIndependenceTable(const analysis::GroupedFixes& fixes);

    /// Shows these rows in the variance table.
    void ShowVariances(std::vector<analysis::VarianceRow> rows);

    /// Fills the reference bandwidth table and updates the largest reference bandwidth and the suggested buffer.
    void FillHrefTable(const analysis::GroupedFixes& fixes);

    /// The numbers behind datagridIO, datagridVar and datagridHref; empty while the table is.
    const std::vector<analysis::IndependenceRow>& IndependenceNumbers() const { return m_independence; }
    const std::vector<analysis::VarianceRow>& VarianceNumbers() const { return m_variances; }
    const std::vector<analysis::HrefRow>& HrefNumbers() const { return m_hrefs; }

    /// Whether the map has a layer of exactly that name.
    bool LayerInMap(const std::string& name) const;

    /// Whether there is a folder of that name, letter case aside.
    bool FolderExists(const std::string& folder) const;

    /// Sets the enabled states that follow from the chosen options.
    void RefreshEnabledStates();

    /// What the last load noted about output folders that do not exist; never shown.
    const std::string& LoadNote() const { return m_loadNote; }

    /// Tells `observer` of every run from now on, after those added before. It must outlive the runs. The first ones
    /// are the form's own, which write the summary and the minimum convex polygons.
    void AddObserver(analysis::IRunObserver& observer) { m_observers.push_back(&observer); }
    /// Shows how the run in progress ended.
    void ShowEnd(analysis::RunOutcome outcome);
    const analysis::SummaryTable& Summary() const { return m_summary; }
    const analysis::ConvexPolygonLayer& ConvexPolygons() const { return m_convexPolygons; }
    const analysis::RangePackage& Ranges() const { return m_ranges; }
    const std::vector<analysis::IRunObserver*>& Observers() const { return m_observers; }

    /// How the last run ended.
    analysis::RunOutcome LastRun() const { return m_lastRun; }

    /// Whether a run is in progress, and whether it was asked to stop.
    bool Running() const { return m_running; }
    bool StopRequested() const { return m_stopRequested; }

    /// Prepares a run and hands it over instead of computing it: see analysis::Analysis::HandOver. Nothing while a run
    /// is in progress.
    analysis::RunOutcome HandOver(const std::function<void(const analysis::PreparedRun&)>& take);

    /// Ends the run in progress after the present distribution; nothing without one.
    void RequestStop() { m_stopRequested = m_running; }

    const platform::Services& Services() const { return m_services; }
    utilities::Utilities& Geodata() const { return m_geodata; }

private:
    void Shielded(const std::function<void()>& procedure);
    void FillPointLayers();
    void FillReferenceLayers();
    void FillIdFields();
    void NoticeDegrees(const platform::Layer& layer);
    void ClearIndependenceTable();
    void ClearVarianceTable();
    void ClearHrefTable();
    void ForgetFixes();
    /// What the plot shows: a row of the reference bandwidths and how its bandwidth is searched.
    struct PlottedSearch {
        int Row;
        analysis::BandwidthMethod Method;
        bool Rescale;
        friend bool operator==(const PlottedSearch&, const PlottedSearch&) = default;
    };

    /// What decides which fixes are read.
    struct FixesChoice {
        std::string Layer;
        std::string IdField;
        bool SelectedOnly;
        friend bool operator==(const FixesChoice&, const FixesChoice&) = default;
    };

    struct KeptFixes {
        FixesChoice Choice;
        analysis::GroupedFixes Fixes;
    };

    FixesChoice ChosenFixes() const;
    void ShowProfile(const analysis::GroupedFixes* fixes);
    std::optional<PlottedSearch> SearchToPlot();
    ProfilePlot PlotChosenAnimal(const PlottedSearch& search, const analysis::GroupedFixes* fixes) const;
    void SuggestBuffer();
    void ShowStatistics(const analysis::GroupedFixes& fixes);
    std::string AnimalField() const;
    analysis::KnownFixes FixesKnown() const;
    std::string FolderProblem() const;
    bool IsInDegrees() const;
    void SuggestCells(const analysis::GroupedFixes& fixes);
    void ForgetSuggestions();
    void ChooseHighlightedLayer();
    void ChooseAnimalField();
    void SuggestOutput();
    void ChooseBandwidth(const platform::OptionButton& chosen);
    void ChooseExtent(const platform::OptionButton& chosen);
    void SwitchIso(bool on);

    platform::Services m_services;
    utilities::Utilities& m_geodata;
    std::string m_outFolder;
    std::string m_loadNote;
    std::string m_suggestedCells;  ///< for the fixes that the pages show; "" where there are none
    double m_largestHref = 0.0;
    bool m_okPressed = false;
    bool m_plotting = false;
    bool m_running = false;
    bool m_stopRequested = false;
    bool m_asksToStop = false;  ///< the question is on screen
    analysis::RunOutcome m_lastRun = analysis::RunOutcome::kNone;
    analysis::SummaryTable m_summary{m_services};
    analysis::ConvexPolygonLayer m_convexPolygons{m_services};
    analysis::RangePackage m_ranges{m_services};
    RunTally m_tally;
    std::vector<analysis::IRunObserver*> m_observers = {&m_summary, &m_convexPolygons, &m_ranges, &m_tally};
    std::optional<platform::UtmTarget> m_utm;  ///< for the chosen layer when it is in degrees
    FixesChoice m_hrefChoice{};                ///< for which the reference bandwidths were computed
    std::optional<PlottedSearch> m_plotted;
    std::vector<analysis::IndependenceRow> m_independence;
    std::vector<analysis::VarianceRow> m_variances;
    std::vector<analysis::HrefRow> m_hrefs;
    std::optional<KeptFixes> m_kept;
};

}  // namespace wxl::kde_tool
