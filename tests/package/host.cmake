# Builds the program in the folder ${host} in one ${way} and holds what it says of ${library}, or of
# the like library of iPhoto 4, against what is known of them.
set(example "${project}/${host}")
cmake_path(GET host FILENAME name)
set(program "${work}/${name}")

function(run)
  execute_process(COMMAND ${ARGV} OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\n${said}")
  endif()
endfunction()

if(way STREQUAL "pkg-config")
  file(MAKE_DIRECTORY "${work}")
  file(GLOB_RECURSE pc "${installed}/*/mrziphoto.pc")
  cmake_path(GET pc PARENT_PATH pc_folder)
  set(ENV{PKG_CONFIG_PATH} "${pc_folder}")
  execute_process(
    COMMAND pkg-config --cflags --libs mrziphoto
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  cmake_path(GET pc_folder PARENT_PATH libraries)
  run("${compiler}" -std=c++20 "${example}/main.cpp" ${flags} "-Wl,-rpath,${libraries}" -o "${program}")
else()
  if(way STREQUAL "find-package")
    set(source "${example}")
  else()
    set(source "${project}/tests/package/${way}")
  endif()
  run("${CMAKE_COMMAND}" -G "${generator}" -S "${source}" -B "${work}"
    "-DCMAKE_CXX_COMPILER=${compiler}" -UBUILD_SHARED_LIBS
    "-DCMAKE_PREFIX_PATH=${installed}" "-DMRZIPHOTO_FOLDER=${project}")
  run("${CMAKE_COMMAND}" --build "${work}" --parallel 2)
endif()

if(name STREQUAL "ask-everything")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C "${program}" "${library}-iphoto4"
    OUTPUT_VARIABLE answers
    COMMAND_ERROR_IS_FATAL ANY)
  if(NOT answers STREQUAL "12 albums\na picture\nFavourite\n")
    message(FATAL_ERROR "${program} says of ${library}-iphoto4:\n${answers}")
  endif()
  return()
endif()

execute_process(
  COMMAND "${program}" "${library}"
  OUTPUT_VARIABLE listing
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[0-9]+\t[^\n]*\t[^\n]+\n" lines "${listing}")
list(LENGTH lines count)
if(NOT count EQUAL 5)
  message(FATAL_ERROR "Expected the five photos of ${library}, but list-photos printed:\n${listing}")
endif()
string(REGEX MATCHALL "\t/[^\t\n]*\n" paths "${listing}")
foreach(path IN LISTS paths)
  string(STRIP "${path}" path)
  if(NOT EXISTS "${path}")
    message(FATAL_ERROR "list-photos names a file that is not there: ${path}")
  endif()
endforeach()
