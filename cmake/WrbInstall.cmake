# cmake --install: the public headers, the import library, the DLLs, the programs, pages, samples, examples, and a package
# config, so that
#
#   find_package(Warrenby CONFIG REQUIRED)
#   target_link_libraries(my_service PRIVATE Warrenby::CmdHndlrClient)
#
# builds against the library from anywhere.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(wrb_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Warrenby)

set_target_properties(libCmdHndlrClient PROPERTIES EXPORT_NAME CmdHndlrClient)
install(TARGETS libCmdHndlrClient EXPORT WarrenbyTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES Server/MasterService/CmdHndlr/libCmdHndlrClient/cmdhl.h Server/libCGICommon/cgi_Helpers.h
              Server/libCGICommon/cgi_GetParameter.h Server/libCGICommon/cgi_PutStream.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The library loads them at run time; programs do not link against them.
install(TARGETS libPerfMonMgr WrbPfwCommon RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ARCHIVE EXCLUDE_FROM_ALL
        DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(WRB_BUILD_TOOLS)
  install(TARGETS wrbhost wrbback wrbctl cgiConsole RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(FILES Server/MasterService/CmdHndlr/libCmdHndlrClient/libCmdHndlrClient.def DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES LICENSE README.md CHANGELOG.md DESTINATION .)
install(DIRECTORY docs samples examples DESTINATION . PATTERN .gitattributes EXCLUDE)
foreach(program wrbhost wrbback wrbctl cgiConsole)  # the pages refer to them
  install(FILES tools/${program}/README.md DESTINATION tools/${program})
endforeach()

install(EXPORT WarrenbyTargets NAMESPACE Warrenby:: DESTINATION ${wrb_package_dir})
configure_package_config_file(cmake/WarrenbyConfig.cmake.in ${CMAKE_BINARY_DIR}/WarrenbyConfig.cmake
                              INSTALL_DESTINATION ${wrb_package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/WarrenbyConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/WarrenbyConfig.cmake ${CMAKE_BINARY_DIR}/WarrenbyConfigVersion.cmake
        DESTINATION ${wrb_package_dir})
