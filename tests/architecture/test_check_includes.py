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
        self.assertEqual(self.problems_of("adapters/files/a.cpp", "#include <gdal_priv.h>\n"), [])

    def test_arrow_against_the_plan_is_found(self):
        self.assertEqual(len(self.problems_of("platform/a.h", '#include "engine/numeric.h"\n')), 1)
        self.assertEqual(len(self.problems_of("kde_tool/a.h", '#include "adapters/files/a.h"\n')), 1)
        self.assertEqual(len(self.problems_of("adapters/memory/a.h", '#include "kde_tool/frmKDE.h"\n')), 1)

    def test_controls_maps_and_workspaces_in_the_engine_are_found(self):
        for header in ("controls.h", "map.h", "workspaces.h", "services.h"):
            self.assertEqual(len(self.problems_of("engine/a.h", f'#include "platform/{header}"\n')), 1, header)
        self.assertEqual(self.problems_of("engine/a.h", '#include "platform/rasters.h"\n'), [])

    def test_arrow_along_the_plan_is_fine(self):
        self.assertEqual(self.problems_of("kde_tool/a.h", '#include "engine/numeric.h"\n'), [])


if __name__ == "__main__":
    unittest.main()
