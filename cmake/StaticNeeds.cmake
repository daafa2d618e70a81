# A program that starts for one answer spends most of its time on loading libraries.

# mrziphoto_prefer_archive(TARGET NAME SHARED): TARGET stands for the archive lib<NAME>.a where the
# system has it, and for the library target SHARED elsewhere.
function(mrziphoto_prefer_archive target name shared)
  if(TARGET ${target})
    return()
  endif()
  add_library(${target} INTERFACE)
  find_library(MRZIPHOTO_ARCHIVE_${name} "${CMAKE_STATIC_LIBRARY_PREFIX}${name}${CMAKE_STATIC_LIBRARY_SUFFIX}")
  mark_as_advanced(MRZIPHOTO_ARCHIVE_${name})
  if(MRZIPHOTO_ARCHIVE_${name})
    target_include_directories(${target} SYSTEM INTERFACE
      "$<TARGET_PROPERTY:${shared},INTERFACE_INCLUDE_DIRECTORIES>")
    target_link_libraries(${target} INTERFACE "${MRZIPHOTO_ARCHIVE_${name}}")
  else()
    target_link_libraries(${target} INTERFACE ${shared})
  endif()
endfunction()

# mrziphoto_link_runtime(TARGET): links the compiler's own libraries into the program, and leaves out
# what it does not call.
function(mrziphoto_link_runtime target)
  # The sanitizers watch over these libraries only where they are shared.
  if(NOT MRZIPHOTO_SANITIZE)
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc LINKER:--gc-sections)
  endif()
endfunction()
