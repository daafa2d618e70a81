# Builds the library static in ${work}, from the objects that were compiled there for the shared one,
# and installs it into ${installed}.
foreach(command IN ITEMS
    "${CMAKE_COMMAND};-DBUILD_SHARED_LIBS=OFF;-DCMAKE_INSTALL_PREFIX=${installed};${work}"
    "${CMAKE_COMMAND};--build;${work};--parallel;2"
    "${CMAKE_COMMAND};--install;${work}")
  execute_process(COMMAND ${command} OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${command}\n${said}")
  endif()
endforeach()
