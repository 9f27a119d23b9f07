# The installed package as a host outside the source tree sees it.
#
#   -DSTEP=install      installs BUILD into WORK/prefix (WORK emptied first)
#   -DSTEP=find_package configures and builds consumer/ against the prefix
#                       through find_package(Tavo), runs it, checks its output
#   -DSTEP=pkg_config   compiles and links consumer/main.cpp with the flags
#                       pkg-config gives for tavo, runs it, checks its output
#
# BUILD, WORK, CXX (the build's compiler, which a sanitized library needs:
# its runtime must be the one it was built for), GENERATOR, BUILD_TYPE,
# PKG_CONFIG, LIBDIR (relative) and EXPECTED come from tests/CMakeLists.txt.
set(Prefix ${WORK}/prefix)
set(Source ${CMAKE_CURRENT_LIST_DIR}/consumer)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE Status OUTPUT_VARIABLE Output ERROR_VARIABLE Output)
  if(NOT Status EQUAL 0)
    string(JOIN " " Command ${ARGN})
    message(FATAL_ERROR "${Command} failed (${Status}):\n${Output}")
  endif()
endfunction()

function(check_output Program)
  execute_process(COMMAND ${Program} RESULT_VARIABLE Status OUTPUT_VARIABLE Actual ERROR_VARIABLE Errors)
  file(READ ${EXPECTED} Expected)
  if(NOT Status EQUAL 0 OR NOT Actual STREQUAL Expected)
    message(FATAL_ERROR "${Program} (${Status}) printed:\n${Actual}\n--- expected ---\n${Expected}\n--- errors ---\n${Errors}")
  endif()
endfunction()

if(STEP STREQUAL "install")
  file(REMOVE_RECURSE ${WORK})
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${Prefix})
  foreach(File include/tavo/engine/InferenceEngine.h ${LIBDIR}/libtavo.a bin/tavo
               ${LIBDIR}/cmake/Tavo/TavoConfig.cmake ${LIBDIR}/cmake/Tavo/TavoConfigVersion.cmake
               ${LIBDIR}/cmake/Tavo/TavoTargets.cmake ${LIBDIR}/pkgconfig/tavo.pc)
    if(NOT EXISTS ${Prefix}/${File})
      message(FATAL_ERROR "The install left out ${File}")
    endif()
  endforeach()
elseif(STEP STREQUAL "find_package")
  set(Build ${WORK}/find_package)
  file(REMOVE_RECURSE ${Build})
  run(${CMAKE_COMMAND} -S ${Source} -B ${Build} -G ${GENERATOR} -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
      -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${Prefix})
  run(${CMAKE_COMMAND} --build ${Build})
  check_output(${Build}/consumer)
elseif(STEP STREQUAL "pkg_config")
  set(ENV{PKG_CONFIG_PATH} ${Prefix}/${LIBDIR}/pkgconfig)
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs tavo RESULT_VARIABLE Status OUTPUT_VARIABLE Flags
                  ERROR_VARIABLE Errors OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT Status EQUAL 0)
    message(FATAL_ERROR "pkg-config --cflags --libs tavo failed:\n${Errors}")
  endif()
  separate_arguments(Flags UNIX_COMMAND "${Flags}")
  file(MAKE_DIRECTORY ${WORK}/pkg_config)
  run(${CXX} ${Source}/main.cpp ${Flags} -o ${WORK}/pkg_config/consumer)
  check_output(${WORK}/pkg_config/consumer)
else()
  message(FATAL_ERROR "Unknown STEP ${STEP}")
endif()
