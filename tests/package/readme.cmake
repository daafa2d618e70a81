# The program that README.md shows is the one that is built here.
file(READ "${project}/README.md" readme)
file(READ "${project}/examples/list-photos/main.cpp" program)
string(FIND "${readme}" "```cpp\n${program}```" position)
if(position EQUAL -1)
  message(FATAL_ERROR "README.md does not show examples/list-photos/main.cpp as it is.")
endif()
