# Programs and libraries in Microsoft mode: clang lays classes and calls out as the host's compiler does.
find_program(ZRML_CLANG NAMES clang++ REQUIRED)
find_program(ZRML_LLD_LINK NAMES lld-link REQUIRED)
find_program(ZRML_LLVM_DLLTOOL NAMES llvm-dlltool REQUIRED)

# zrml_microsoft_object(OBJECT SOURCE HEADERS "headers" FLAGS...): free-standing, without any header of a standard library.
function(zrml_microsoft_object object source headers)
  add_custom_command(OUTPUT ${object}
    COMMAND ${ZRML_CLANG} --target=x86_64-pc-windows-msvc -fms-compatibility-version=19.30 -std=c++20 -O1 -ffreestanding
      -fno-rtti -mno-stack-arg-probe -Wall -Wextra -Wshadow -Werror -I${PROJECT_SOURCE_DIR} ${ARGN}
      -c ${CMAKE_CURRENT_SOURCE_DIR}/${source} -o ${object}
    DEPENDS ${source} ${headers} VERBATIM)
endfunction()
