#pragma once
#include "apps/cli/commands/kde.h"
#include "apps/cli/commands/kde_form.h"
#include "apps/cli/imported_layer.h"
#include "apps/cli/tool_session.h"
#include "kde_tool/frmKDE.h"

#include <memory>
#include <optional>

namespace wxl::cli {

/// The host of a run: every turn that it gets draws the form's progress, and passes a wish to stop (StopSignals) on.
class ProgressHost final : public platform::IHost {
public:
    ProgressHost(platform::IHost& host, Console& console) : m_host(host), m_console(console) {}
    void Watch(kde_tool::frmKDE& form) { m_form = &form; }
    void Yield() override;
    void SetStatus(std::string_view text) override { m_host.SetStatus(text); }

private:
    platform::IHost& m_host;
    Console& m_console;
    kde_tool::frmKDE* m_form = nullptr;
};

/// The analysis form over the layer that the options name, filled with them.
class KdeSession {
public:
    /// WrongCall for options that make no sense, RuntimeError for an input that cannot be used.
    KdeSession(const KdeOptions& given, Console& console);

    kde_tool::frmKDE& Form() { return *m_form; }
    const platform::Services& Services() const { return m_services; }
    const ReadFiles& Read() const { return m_read; }

private:
    void AddOtherFiles(const KdeOptions& options);

    GivenSettings m_given;
    std::unique_ptr<ImportedLayer> m_imported;  ///< null where the layer is read as it is
    std::shared_ptr<files::FilesFeatureLayer> m_layer;
    ReadFiles m_read;
    ToolSession m_session;
    ProgressHost m_host;
    platform::Services m_services;
    std::optional<kde_tool::frmKDE> m_form;
};

/// Makes the output folder where it is not there, and with --overwrite deletes what the run would meet in it. A batch
/// that waits there to be finished is RuntimeError 70 without --overwrite.
void prepare_output(const KdeOptions& options, kde_tool::frmKDE& form);

}  // namespace wxl::cli
