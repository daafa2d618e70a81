# Installs the folder ${build} into ${installed} and lets the installed tool write two
# libraries, and a picture, for which it has to find its module.
file(REMOVE_RECURSE "${installed}" "${library}" "${library}-iphoto4")
execute_process(
  COMMAND "${CMAKE_COMMAND}" --install "${build}" --prefix "${installed}"
  OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
foreach(arguments IN ITEMS
    "sample;${library};--library-version;200;--photos;5"
    "sample;${library}-iphoto4;--library-version;24;--photos;5"
    "contact-sheet;${library};--output;${installed}/sheet.jpg")
  execute_process(COMMAND "${installed}/bin/mrziphoto" ${arguments} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
