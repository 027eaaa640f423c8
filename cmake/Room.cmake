# zorvcrt_room(name [STANDS_ON room...] HEADERS header... SOURCES source...)
#
# One room of src/ as an object library. It sees its own headers and those of the rooms it stands on, and no
# others: the public headers, flat in include/, are linked into one folder per room for that, so that an
# include which runs upwards does not compile. Sources for one processor are no part of a portable build.
function(zorvcrt_room room)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "STANDS_ON;HEADERS;SOURCES")
  set(links ${PROJECT_BINARY_DIR}/rooms/${room})
  file(REMOVE_RECURSE ${links})
  file(MAKE_DIRECTORY ${links})
  foreach(header IN LISTS arg_HEADERS)
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/include/${header} ${links}/${header} SYMBOLIC)
  endforeach()

  if(ZORVCRT_PORTABLE)
    list(FILTER arg_SOURCES EXCLUDE REGEX "_avx(2|512)\\.cpp$|^wide_registers\\.cpp$")
  endif()
  add_library(room_${room} OBJECT ${arg_SOURCES})
  target_include_directories(room_${room} PUBLIC ${links} ${CMAKE_CURRENT_SOURCE_DIR})
  list(TRANSFORM arg_STANDS_ON PREPEND room_)
  target_link_libraries(room_${room} PUBLIC ${arg_STANDS_ON})
  target_compile_definitions(room_${room} PRIVATE _GNU_SOURCE)
  target_compile_options(room_${room} PRIVATE -fno-exceptions -fno-rtti)
  # All names are bound when the library is loaded. With the linker's stubs in front of them, a call of malloc or
  # free from a small parse costs it four in a hundred more.
  target_compile_options(room_${room} PRIVATE -fno-plt)
  set_target_properties(room_${room} PROPERTIES
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  zorvcrt_warnings(room_${room})
  zorvcrt_hardening(room_${room})
  zorvcrt_integer_checks(room_${room})
  zorvcrt_coverage(room_${room})
  set_property(GLOBAL APPEND PROPERTY ZORVCRT_ROOMS ${room})
  set_property(GLOBAL PROPERTY ZORVCRT_HEADERS_OF_${room} ${arg_HEADERS})
  list(TRANSFORM arg_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/)
  set_property(GLOBAL APPEND PROPERTY ZORVCRT_HEADERS ${arg_HEADERS})
endfunction()
