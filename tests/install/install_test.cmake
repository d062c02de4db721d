cmake_minimum_required(VERSION 3.25)

set(prefix ${build}/install_test/prefix)
set(consumer ${build}/install_test/consumer)
file(REMOVE_RECURSE ${build}/install_test)

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nresult ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${build} --prefix ${prefix})

# Four entry points, undecorated, the gateway classes, and nothing needed that a bare system with our own DLLs lacks.
set(dll ${prefix}/bin/libCmdHndlrClient.dll)
run(${objdump} -p ${dll})
string(REGEX MATCH "Name Pointer\\] Table[^\n]*\n(\t?\\[[^\n]*\n)+" names "${output}")
string(REGEX MATCHALL "[^ \n]+\n" exports "${names}")
list(POP_FRONT exports)  # the heading
list(TRANSFORM exports STRIP)
list(SORT exports)
# Decorated: members of the two classes and of what they stand on, the helpers and the manipulators.
list(FILTER exports EXCLUDE REGEX
     "^_ZN?K?(13CGetParameter|10CPutStream|21OutputStreamConverter|14cgi_GetHomeDir|15cgi_UnEscapeUrl|4endl|5flush)")
set(expected cmdhl_Finalize cmdhl_Initialize cmdhl_Process cmdhl_ReloadDebugSetting)
if(NOT exports STREQUAL expected)
  message(FATAL_ERROR "the DLL exports: ${exports}")
endif()
string(REGEX MATCHALL "DLL Name: [^\n]*" imports "${output}")
list(TRANSFORM imports REPLACE "DLL Name: " "")
set(own libPerfWrbyPerfMonMgr.dll)
set(system KERNEL32.dll ADVAPI32.dll bcrypt.dll CRYPT32.dll WS2_32.dll msvcrt.dll ole32.dll SHELL32.dll USER32.dll
    VERSION.dll WINTRUST.dll)
foreach(import IN LISTS imports)
  if(NOT import IN_LIST own AND NOT import IN_LIST system)
    message(FATAL_ERROR "the DLL needs ${import}, which a plain system lacks")
  endif()
endforeach()
if(NOT own IN_LIST imports)
  message(FATAL_ERROR "the DLL does not use the counter library; it needs: ${imports}")
endif()

run(${CMAKE_COMMAND} -G ${generator} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${consumer}
    -D CMAKE_BUILD_TYPE=${config} -D CMAKE_TOOLCHAIN_FILE=${toolchain} -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${consumer} --config ${config})
foreach(language c cpp)
  run(${emulator} ${prefix}/bin/consumer_${language}.exe)
endforeach()
foreach(program wrbhost wrbback wrbctl)
  run(${emulator} ${prefix}/bin/${program}.exe --version)
  if(NOT output MATCHES "^${program} [0-9.]+ \\(commit [0-9a-z-]+\\)\n$")
    message(FATAL_ERROR "${program} --version prints: ${output}")
  endif()
endforeach()
run(${emulator} ${prefix}/bin/cgiConsole.exe)
