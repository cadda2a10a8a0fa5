"""Runs inside the desktop: the toolbox has the algorithms, their dialog can be read, and one of them runs."""
import pathlib

import processing
from qgis.core import (QgsApplication, QgsProcessingContext, QgsProcessingFeedback, QgsProcessingModelAlgorithm,
                       QgsProcessingModelChildAlgorithm, QgsProcessingModelChildParameterSource,
                       QgsProcessingModelParameter, QgsProcessingParameterVectorLayer, QgsProject)
from qgis.PyQt.QtWidgets import QApplication, QTabWidget
from qgis.utils import iface

from desktop_support import SETUP, check, drive, shoot


def show_dialog():
    dialog = processing.createAlgorithmDialog("wxltools:kerneldensity", {})
    dialog.resize(900, 780)
    dialog.show()
    for _ in range(10):
        QApplication.processEvents()
    shoot(dialog, "processing-kernel-density")
    check(dialog.findChild(QTabWidget) is not None, "the dialog of the algorithm")
    dialog.close()


def show_ranges_with_limits(fixes, root):
    """The ranges of autocorrelated fixes above those of before, with an outline for every limit."""
    loaded = processing.runAndLoadResults("wxltools:autocorrelatedranges",
                                          {"INPUT": fixes, "ID_FIELD": "animal", "TIME_FIELD": "Date",
                                           "TIME_OF_DAY_FIELD": "Time1", "GPKG": True,
                                           "OUTPUT": SETUP["output"] + "-akde"})
    check(loaded["DISTRIBUTIONS"] == 4 and loaded["FAILED"] == 0, f"ranges with limits: {loaded}")
    check(pathlib.Path(loaded["PACKAGE"]).name == "RANGES.gpkg", "their package")
    group = root.findGroup("Home ranges: fixes, AKDE")
    check(group is not None and len(group.children()) == 8, "their group")
    legend = [item.label() for item in group.children()[0].layer().renderer().legendSymbolItems()]
    check(legend == ["95 % high", "95 %", "95 % low", "50 % high", "50 %", "50 % low"], str(legend))
    root.findGroup("Home ranges: fixes, reference bandwidth").setItemVisibilityChecked(False)
    root.findLayer(fixes.id()).setItemVisibilityChecked(False)
    settle()
    shoot(iface.mainWindow(), "processing-limits")


def show_comparisons(fixes, root):
    """What pairs have in common over the minimum convex polygons, and what overlaps nothing is not drawn."""
    fields = {"INPUT": fixes, "ID_FIELD": "animal"}
    polygons = processing.runAndLoadResults("wxltools:minimumconvexpolygons",
                                            {**fields, "PERCENTAGES": "95", "OUTPUT": "TEMPORARY_OUTPUT"})
    check(polygons["ANIMALS"] == 4, f"minimum convex polygons: {polygons}")
    common = processing.runAndLoadResults("wxltools:overlap",
                                          {**fields, "PERCENTAGES": "95", "OUTPUT": SETUP["output"] + "-overlap"})
    check(common["ANIMALS"] == 4, f"overlap: {common}")
    curve = processing.runAndLoadResults("wxltools:areacurve",
                                         {**fields, "TIME_FIELD": "Time2", "OUTPUT": "TEMPORARY_OUTPUT"})
    check(curve["ANIMALS"] == 4, f"area curve: {curve}")
    root.findGroup("Home ranges: fixes, AKDE").setItemVisibilityChecked(False)
    settle()
    shoot(iface.mainWindow(), "processing-comparisons")


def settle():
    for _ in range(30):
        QApplication.processEvents()
    iface.mapCanvas().refresh()
    iface.mapCanvas().waitWhileRendering()


def run_model(fixes):
    """Duplicates removed, then home ranges of what is left."""
    model = QgsProcessingModelAlgorithm("ranges without duplicates", "test")
    model.addModelParameter(QgsProcessingParameterVectorLayer("fixes", "fixes"), QgsProcessingModelParameter("fixes"))
    source = QgsProcessingModelChildParameterSource
    first = QgsProcessingModelChildAlgorithm("wxltools:removeduplicates")
    first.setChildId("unique")
    first.addParameterSources("INPUT", [source.fromModelParameter("fixes")])
    first.addParameterSources("BY", [source.fromStaticValue(1)])
    model.addChildAlgorithm(first)
    then = QgsProcessingModelChildAlgorithm("wxltools:kerneldensity")
    then.addParameterSources("INPUT", [source.fromChildOutput("unique", "OUTPUT")])
    for name, value in (("ID_FIELD", "animal"), ("CELL_SIZE", 300), ("OUTPUT", SETUP["output"] + "-model")):
        then.addParameterSources(name, [source.fromStaticValue(value)])
    model.addChildAlgorithm(then)
    context = QgsProcessingContext()
    context.setProject(QgsProject.instance())
    feedback = QgsProcessingFeedback()
    _, done = model.run({"fixes": fixes.id()}, context, feedback)
    check(done, feedback.textLog())
    check((pathlib.Path(SETUP["output"] + "-model") / "WXL_KDE_SUMMARY.csv").is_file(), "results of the model")


def main():
    registry = QgsApplication.processingRegistry()
    provider = registry.providerById("wxltools")
    check(provider is not None, "the provider is there")
    check(sorted(a.name() for a in provider.algorithms()) ==
          ["areacurve", "autocorrelatedranges", "kerneldensity", "minimumconvexpolygons", "observationfields", "overlap",
           "removeduplicates", "statistics"], "its algorithms")
    show_dialog()
    fixes = QgsProject.instance().mapLayersByName("fixes")[0]
    result = processing.run("wxltools:kerneldensity",
                            {"INPUT": fixes, "ID_FIELD": "animal", "CELL_SIZE": 300, "OUTPUT": SETUP["output"]})
    check(result["DISTRIBUTIONS"] == 4, f"four wolves: {result}")
    check(all(pathlib.Path(raster).is_dir() for raster in result["RASTERS"]), "the rasters")
    check(iface.mainWindow() is not None, "the desktop goes on")
    run_model(fixes)
    loaded = processing.runAndLoadResults("wxltools:kerneldensity",
                                          {"INPUT": fixes, "ID_FIELD": "animal", "CELL_SIZE": 300, "POLYGONS": True,
                                           "OUTPUT": SETUP["output"] + "-loaded"})
    check(loaded["DISTRIBUTIONS"] == 4, "results that are loaded")
    root = QgsProject.instance().layerTreeRoot()
    names = [node.name() for node in root.children()]
    check(names == ["fixes", "Home ranges: fixes, reference bandwidth"], str(names))
    animals = ["Freja", "Loke", "Sif", "Tyr"]
    check([node.name() for node in root.children()[1].children()] ==
          [f"{a}: isopleth polygons" for a in animals] + [f"{a}: density" for a in animals], "the dialog's names")
    shoot(iface.mainWindow(), "processing-loaded")
    show_ranges_with_limits(fixes, root)
    show_comparisons(fixes, root)


drive(main)
