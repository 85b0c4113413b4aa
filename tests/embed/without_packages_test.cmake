# Configures SOURCE in WORK as if the packages that only the program zorpelx needs were not there:
# the program is left out, and what to install is told.
file(REMOVE_RECURSE ${WORK})
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK} -DCMAKE_C_COMPILER=${C_COMPILER}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON
    -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON -DCMAKE_DISABLE_FIND_PACKAGE_ZLIB=ON
    -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON
  OUTPUT_VARIABLE text ERROR_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
set(wanted
  "apt-get install libcli11-dev nlohmann-json3-dev zlib1g-dev pkg-config libzstd-dev\n")
if(NOT text MATCHES "${wanted}")
  message(FATAL_ERROR "It does not say what to install:\n${text}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK} --target help
  OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
if(text MATCHES "[ .]zorpelx\n" OR NOT text MATCHES "[ .]zorpelx_shared\n")
  message(FATAL_ERROR "The targets are:\n${text}")
endif()
