# Installs the folder ${build} into ${installed} and lets the installed tool write a library.
file(REMOVE_RECURSE "${installed}" "${library}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" --install "${build}" --prefix "${installed}"
  OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND "${installed}/bin/mrziphoto" sample "${library}" --library-version 200 --photos 5
  COMMAND_ERROR_IS_FATAL ANY)
