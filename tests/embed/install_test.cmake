# Installs the build tree BUILD into WORK, moves it, builds the project CONSUMER against it and runs
# what came out.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN} ended with ${status}:\n${text}")
  endif()
  set(text "${text}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK})
foreach(component library development)
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first --component ${component})
endforeach()
file(RENAME ${WORK}/first ${WORK}/moved)
set(ENV{PKG_CONFIG_PATH} ${WORK}/moved/${LIBDIR}/pkgconfig)
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${WORK}/moved
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
  -DCMAKE_C_FLAGS=${FLAGS} -DCMAKE_CXX_FLAGS=${FLAGS})
run(${CMAKE_COMMAND} --build ${WORK}/build)
foreach(program use_zorpel use_zorpel_static use_zorpelx use_engine_pc use_zorpelx_pc)
  run(${WORK}/build/${program})
  if(NOT text STREQUAL "cut 0\n")
    message(FATAL_ERROR "${program} printed: ${text}")
  endif()
endforeach()
