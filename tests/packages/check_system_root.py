#!/usr/bin/env python3
"""Uses the packages in the root of a system where they were installed: check_system_root.py ROOT VERSION [--plugin]"""
import sys

from installed import System, check_plugin, check_tool

root, version = sys.argv[1:3]
place = System(root)
check_tool(place, None, version)
print("wxl works in the fresh system")
if "--plugin" in sys.argv:
    check_plugin(place, None)
    print("QGIS loads the plugin in the fresh system")
