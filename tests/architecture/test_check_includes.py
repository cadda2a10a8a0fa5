#!/usr/bin/env python3
"""The include check finds what it is there for."""
import importlib.util
import pathlib
import tempfile
import unittest

spec = importlib.util.spec_from_file_location("check_includes", pathlib.Path(__file__).with_name("check_includes.py"))
check_includes = importlib.util.module_from_spec(spec)
spec.loader.exec_module(check_includes)


class CheckIncludes(unittest.TestCase):
    def problems_of(self, path, text):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / path
            file.parent.mkdir(parents=True)
            file.write_text(text, encoding="utf-8")
            return list(check_includes.problems(pathlib.Path(folder)))

    def test_toolkit_header_in_the_core_is_found(self):
        for header in ("<QString>", '"qgsvectorlayer.h"', "<gdal_priv.h>", "<ogrsf_frmts.h>", "<geos_c.h>"):
            self.assertEqual(len(self.problems_of("engine/a.h", f"#include {header}\n")), 1, header)

    def test_adapter_may_include_gdal(self):
        self.assertEqual(self.problems_of("adapters/gdal/a.cpp", "#include <gdal_priv.h>\n"), [])

    def test_arrow_against_the_plan_is_found(self):
        self.assertEqual(len(self.problems_of("platform/a.h", '#include "engine/numeric.h"\n')), 1)
        self.assertEqual(len(self.problems_of("kde_tool/a.h", '#include "adapters/disk/a.h"\n')), 1)
        self.assertEqual(len(self.problems_of("adapters/memory/a.h", '#include "kde_tool/frmKDE.h"\n')), 1)

    def test_adapters_know_only_those_below_them(self):
        for file, header in (("disk/a.h", "gdal/a.h"), ("gdal/a.h", "raster/a.h"), ("shapefile/a.h", "ogr/a.h"),
                             ("raster/a.h", "ogr/a.h"), ("geos/a.h", "gdal/a.h"), ("tracking/a.h", "ogr/a.h")):
            self.assertEqual(len(self.problems_of(f"adapters/{file}", f'#include "adapters/{header}"\n')), 1, file)
        self.assertEqual(self.problems_of("adapters/ogr/a.h", '#include "adapters/shapefile/a.h"\n'), [])

    def test_controls_maps_and_workspaces_in_the_engine_are_found(self):
        for header in ("controls.h", "map.h", "workspaces.h", "services.h"):
            self.assertEqual(len(self.problems_of("engine/a.h", f'#include "platform/{header}"\n')), 1, header)
        self.assertEqual(self.problems_of("engine/a.h", '#include "platform/rasters.h"\n'), [])

    def test_the_machine_asked_without_a_port_is_found_in_the_core(self):
        for line in ("#include <fstream>", "#include <thread>", "#include <sys/stat.h>", "std::ifstream in(path);",
                     "std::filesystem::exists(path);", "namespace fs = std::filesystem;", "fs::remove(path);",
                     "std::this_thread::sleep_for(pause);"):
            self.assertEqual(len(self.problems_of("batch/a.cpp", line + "\n")), 1, line)
            self.assertEqual(self.problems_of("adapters/disk/a.cpp", line + "\n"), [], line)
        for line in ("#include <filesystem>", "const std::filesystem::path& file", "offs::value"):
            self.assertEqual(self.problems_of("batch/a.cpp", line + "\n"), [], line)

    def test_libraries_stay_in_the_rooms_that_have_them(self):
        for header in ("<nlohmann/json.hpp>", "<nettle/sha2.h>"):
            self.assertEqual(self.problems_of("batch/a.cpp", f"#include {header}\n"), [], header)
            self.assertEqual(len(self.problems_of("engine/a.cpp", f"#include {header}\n")), 1, header)

    def test_arrow_along_the_plan_is_fine(self):
        self.assertEqual(self.problems_of("kde_tool/a.h", '#include "engine/numeric.h"\n'), [])


if __name__ == "__main__":
    unittest.main()
