# How a library, a program and a test of this project are declared.
#
#   wrb_library(libpipe SOURCES a.cpp DEPENDS libCommon)       static library; its folder becomes its include directory
#   wrb_shared_library(WrbPfwCommon OUTPUT WrbPfwCommon_64x DESCRIPTION "..." SOURCES a.cpp DEPENDS libCommon)
#                                                              OUTPUT.dll in bin/ with a version resource
#   wrb_program(wrbctl DESCRIPTION "..." SOURCES main.cpp DEPENDS libpipe)
#                                                              console program in bin/; with a DESCRIPTION it has a version
#                                                              resource and the manifest
#   wrb_test(libpipe_test SOURCES x_test.cpp DEPENDS libpipe)  GoogleTest program, one CTest entry
#
# A library's headers are visible only to targets that name it in DEPENDS, so an include of a higher layer
# fails to compile.

function(wrb_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  if(arg_SOURCES)
    add_library(${name} STATIC ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES PREFIX "" POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC wrb_compiler ${arg_DEPENDS})
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} INTERFACE wrb_compiler ${arg_DEPENDS})
  endif()
endfunction()

# Adds the version resource to a target. The caller has arg_DESCRIPTION.
function(wrb_version_resource target wrb_internal_name wrb_suffix wrb_file_type wrb_manifest)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/VersionInfo.rc.in ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
  if(MINGW)  # the same sources give the same bytes
    target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp)
  endif()
endfunction()

# DEPENDS is private to the DLL. The caller adds what users of the DLL need: target_link_libraries(... PUBLIC ...).
function(wrb_shared_library name)
  cmake_parse_arguments(arg "" "OUTPUT;DESCRIPTION" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} SHARED ${arg_SOURCES})
  wrb_version_resource(${name} ${arg_OUTPUT} .dll VFT_DLL "")
  set_target_properties(${name} PROPERTIES PREFIX "" IMPORT_PREFIX "" OUTPUT_NAME ${arg_OUTPUT})
  target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>)
  target_link_libraries(${name} PRIVATE wrb_compiler ${arg_DEPENDS})
endfunction()

function(wrb_program name)
  cmake_parse_arguments(arg "" "DESCRIPTION" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  if(arg_DESCRIPTION)
    set(manifest ${PROJECT_SOURCE_DIR}/cmake/Program.manifest)
    if(MSVC)  # its linker embeds a manifest that is among the sources
      target_sources(${name} PRIVATE ${manifest})
      wrb_version_resource(${name} ${name} .exe VFT_APP "")
    else()
      wrb_version_resource(${name} ${name} .exe VFT_APP "CREATEPROCESS_MANIFEST_RESOURCE_ID RT_MANIFEST \"${manifest}\"")
    endif()
  endif()
  target_link_libraries(${name} PRIVATE wrb_compiler ${arg_DEPENDS})
endfunction()

# SERIAL: the test uses names that exist once on a machine (service pipes, the registry, named sections); CTest runs
# such tests one after the other.
function(wrb_test name)
  cmake_parse_arguments(arg "SERIAL" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE wrb_compiler ${arg_DEPENDS} GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
  if(CMAKE_CURRENT_SOURCE_DIR MATCHES "/tests/unit/")
    set_tests_properties(${name} PROPERTIES LABELS unit)
  endif()
  if(arg_SERIAL)
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK machine_wide_names)
  endif()
endfunction()
