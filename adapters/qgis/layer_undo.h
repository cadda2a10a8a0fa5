#pragma once
#include <memory>
#include <qgsvectorlayer.h>
#include <QStringList>

namespace wxl::qgis {

/// The rows of a layer as they were before a tool changed them, to be put back.
class LayerUndo {
public:
    /// What a tool may change: which rows there are (among the selected ones), or the cells of these columns, which it
    /// also adds.
    struct Scope {
        bool Rows = false;
        QStringList Columns;
    };

    /// Takes the present state. RuntimeError when there is no room for it.
    static std::shared_ptr<LayerUndo> Of(QgsVectorLayer& layer, const Scope& scope);

    virtual ~LayerUndo() = default;

    /// To be called when the tool is done: whether it changed anything. What is changed after this is not undone.
    virtual bool Finish() = 0;

    /// Puts the earlier state back and has QGIS show it; the selection is dropped. RuntimeError with a sentence, and no
    /// change, when the layer was removed, is edited, or was changed since.
    virtual void PutBack() = 0;
};

}  // namespace wxl::qgis
