# What is installed beside the programs, and the two Debian packages: wxl, and qgis-plugin-wxl where the plugin is built.
#   cmake --build --preset release --target packages     -> build/release/packages/*.deb
set(WXL_PACKAGING ${CMAKE_SOURCE_DIR}/packaging)
set(WXL_CHANGELOG ${CMAKE_BINARY_DIR}/packaging/changelog)
configure_file(${WXL_PACKAGING}/debian/changelog.in ${WXL_CHANGELOG} @ONLY)
execute_process(COMMAND gzip -9nkf ${WXL_CHANGELOG} COMMAND_ERROR_IS_FATAL ANY)

# wxl_package_documents(<component> <package>): what every package must say about itself.
function(wxl_package_documents component package)
  install(FILES ${WXL_PACKAGING}/debian/copyright ${WXL_CHANGELOG}.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
          COMPONENT ${component})
endfunction()

wxl_package_documents(wxl wxl)
install(FILES ${CMAKE_SOURCE_DIR}/samples/wolves.csv DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/wxl/examples COMPONENT wxl)
install(PROGRAMS ${WXL_PACKAGING}/wxl-demo DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/wxl/examples COMPONENT wxl)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/guide DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/wxl COMPONENT wxl
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
        FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.svg")

set(CPACK_COMPONENTS_ALL wxl)
set(WXL_PACKAGED_TARGETS wxl)
if(WXL_BUILD_QGIS)
  list(APPEND CPACK_COMPONENTS_ALL plugin)
  list(APPEND WXL_PACKAGED_TARGETS wxltools)
  wxl_package_documents(plugin qgis-plugin-wxl)
  install(FILES ${WXL_PACKAGING}/enable-plugin.ini DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/qgis-plugin-wxl/examples
          COMPONENT plugin)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME wxl)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGE_CONTACT "WXL Tools developers <developers@wxl-tools.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                                WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_WXL_PACKAGE_NAME wxl)
set(CPACK_DEBIAN_WXL_PACKAGE_SECTION science)
set(CPACK_DEBIAN_WXL_PACKAGE_SUGGESTS "qgis-plugin-wxl")
set(CPACK_COMPONENT_WXL_DESCRIPTION
    "home ranges from animal tracking data
Computes utilization distributions of animals by kernel density, on the command
line: bandwidths by the reference rule, least squares and biased
cross-validation, density rasters, isopleths with areas, statistics of serial
independence, times, distances and speeds between fixes.
.
Reads tracking tables and every point layer that GDAL reads; writes shapefiles,
rasters, a report and JSON.")

set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME qgis-plugin-wxl)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_DEPENDS "qgis")
set(CPACK_DEBIAN_PLUGIN_PACKAGE_RECOMMENDS "wxl")
set(CPACK_COMPONENT_PLUGIN_DESCRIPTION
    "home ranges from animal tracking data, plugin for QGIS
Adds a toolbar to QGIS with kernel density analysis of animal tracks,
isopleths, travel times and distances, removal of duplicate fixes and a player
of tracks.
.
Enable it once under Plugins, Manage and Install Plugins, Installed.")

include(CPack)

add_custom_target(
  packages
  COMMAND ${CMAKE_CPACK_COMMAND} --config ${CMAKE_BINARY_DIR}/CPackConfig.cmake
  COMMENT "Writing the Debian packages into ${CPACK_PACKAGE_DIRECTORY}"
  USES_TERMINAL)
add_dependencies(packages ${WXL_PACKAGED_TARGETS})
