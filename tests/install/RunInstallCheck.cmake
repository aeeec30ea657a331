# Installs the built library into a fresh prefix, checks that the umbrella header reaches no header of a
# private dependency, then configures, builds and runs a host program against that prefix alone.
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

# Every header the umbrella reaches, system ones included, must come from the standard library, nlohmann-json
# or the installed package.
file(WRITE ${WORK_DIR}/umbrella.cpp "#include <ycontacts/YContacts.h>\n")
run_step("listing the umbrella's headers" ${CXX_COMPILER} -std=c++20 -M -I${prefix}/include ${WORK_DIR}/umbrella.cpp)
foreach(private simdjson sqlite3 curl/ spdlog/ fmt/ httplib)
  string(FIND "${step_output}" "${private}" found)
  if(NOT found EQUAL -1)
    message(FATAL_ERROR "The installed umbrella header reaches a private dependency (${private}):\n${step_output}")
  endif()
endforeach()

run_step("configuring the host" ${CMAKE_COMMAND} -S ${HOST_SOURCE} -B ${WORK_DIR}/build -G ${GENERATOR}
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_PACKAGE_NO_PACKAGE_REGISTRY=ON
  -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
  "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${EXE_LINKER_FLAGS}")
run_step("building the host" ${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run_step("running the host" ${WORK_DIR}/build/ycontacts_host ${WORK_DIR}/data)
message(STATUS "${step_output}")
