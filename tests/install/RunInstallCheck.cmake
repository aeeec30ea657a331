# Installs the built library into a fresh prefix, checks what the shared library exports, then configures,
# builds and runs a host program against that prefix alone, with every installed header compiled on its own
# and checked to reach no header of a private dependency.
#
# Expects: BUILD_DIR, HOST_SOURCE, WORK_DIR, GENERATOR, CXX_COMPILER, BUILD_TYPE, CXX_FLAGS, EXE_LINKER_FLAGS.
cmake_minimum_required(VERSION 3.25)

foreach(variable BUILD_DIR HOST_SOURCE WORK_DIR GENERATOR CXX_COMPILER)
  if(NOT DEFINED ${variable} OR "${${variable}}" STREQUAL "")
    message(FATAL_ERROR "RunInstallCheck.cmake needs -D${variable}=...")
  endif()
endforeach()

function(run_step name)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${name} failed (${result}):\n${output}")
  endif()
  set(step_output "${output}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/data)

run_step("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# The shared library exports its own symbols and nothing else (no fmt, spdlog or standard library code).
file(GLOB libraries ${prefix}/lib*/libycontacts.so)
run_step("listing the exported symbols" nm -D --defined-only -C ${libraries})
string(REPLACE "\n" ";" symbols "${step_output}")
list(LENGTH symbols exported)
if(exported LESS 50)
  message(FATAL_ERROR "Too few exported symbols (${exported}) to be the library:\n${step_output}")
endif()
foreach(symbol IN LISTS symbols)
  if(NOT symbol STREQUAL "" AND NOT symbol MATCHES "ycontacts::")
    message(FATAL_ERROR "The library exports a symbol of another code base: ${symbol}")
  endif()
endforeach()

# The host build compiles every installed header alone (one translation unit each).

run_step("configuring the host" ${CMAKE_COMMAND} -S ${HOST_SOURCE} -B ${WORK_DIR}/build -G ${GENERATOR}
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_PACKAGE_NO_PACKAGE_REGISTRY=ON
  -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
  "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${EXE_LINKER_FLAGS}")
run_step("building the host" ${CMAKE_COMMAND} --build ${WORK_DIR}/build)

# What those translation units included, system headers too, comes only from the standard library,
# nlohmann-json or the installed package. Ninja keeps the compiler's dependency lists in its own log.
if(NOT GENERATOR MATCHES "Ninja")
  message(FATAL_ERROR "The header check reads Ninja's dependency log; configure with a Ninja generator")
endif()
run_step("listing what the headers include" ${CMAKE_COMMAND} --build ${WORK_DIR}/build -- -t deps)
string(FIND "${step_output}" "alone/ycontacts_YContacts_h.cpp" found)
if(found EQUAL -1)
  message(FATAL_ERROR "Ninja's dependency log does not list the headers' translation units:\n${step_output}")
endif()
foreach(private simdjson sqlite3 curl/ spdlog/ fmt/ httplib)
  string(FIND "${step_output}" "${private}" found)
  if(NOT found EQUAL -1)
    message(FATAL_ERROR "An installed header reaches a private dependency (${private}):\n${step_output}")
  endif()
endforeach()

run_step("running the host" ${WORK_DIR}/build/ycontacts_host ${WORK_DIR}/data)
message(STATUS "${step_output}")
