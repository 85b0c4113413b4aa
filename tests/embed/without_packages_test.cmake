# SPDX-License-Identifier: MIT
# Configures SOURCE in WORK as if the packages that zorpelx needs for its program and for compressed
# files were not there: both are left out, and what to install is told. The readers are built all
# the same.
file(REMOVE_RECURSE ${WORK})
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK} -DCMAKE_C_COMPILER=${C_COMPILER}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON
    -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON -DCMAKE_DISABLE_FIND_PACKAGE_ZLIB=ON
    -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON -DCMAKE_DISABLE_FIND_PACKAGE_BZip2=ON
    -DCMAKE_DISABLE_FIND_PACKAGE_LibLZMA=ON
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DZORPEL_QUICK=ON
  OUTPUT_VARIABLE text ERROR_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
foreach(wanted "libcli11-dev nlohmann-json3-dev zlib1g-dev libmd-dev" "zlib1g-dev libbz2-dev liblzma-dev libzstd-dev")
  if(NOT text MATCHES "apt-get install ${wanted}\n")
    message(FATAL_ERROR "It does not say to install ${wanted}:\n${text}")
  endif()
endforeach()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK} --target zorpelx_files
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK} --target help
  OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
if(text MATCHES "[ .]zorpelx\n" OR NOT text MATCHES "[ .]zorpelx_shared\n")
  message(FATAL_ERROR "The targets are:\n${text}")
endif()
