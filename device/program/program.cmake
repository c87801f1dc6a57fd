# Programs for the device, beside the library's image: made by the same compiler with the same
# settings, in a project that has the library's target.

# Where the system puts every program.
set(VEXO_PROGRAM_BASE 0x10000)
set(VEXO_PROGRAM_SOURCES ${CMAKE_CURRENT_LIST_DIR}/start.cpp)
set(VEXO_PROGRAM_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/image.ld)

# vexo_device_program(TARGET NAME SOURCE...): NAME.exe and its map. The folder has tables.S, what
# the program asks of the system, and version.rc.
function(vexo_device_program target name)
  # Not of the program's name: CMake takes NAME.exe for what a target NAME makes.
  set(elf ${target}_elf)
  add_executable(${elf} ${ARGN} tables.S ${VEXO_PROGRAM_SOURCES})
  set_target_properties(${elf} PROPERTIES OUTPUT_NAME ${name} SUFFIX .elf CXX_STANDARD 17 C_STANDARD 90
                        C_STANDARD_REQUIRED ON RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}
                        LINK_DEPENDS ${VEXO_PROGRAM_SCRIPT})
  set_source_files_properties(tables.S PROPERTIES OBJECT_DEPENDS ${CMAKE_SOURCE_DIR}/table_macros.inc)
  target_include_directories(${elf} PRIVATE ${VEXO_ROOT} ${VEXO_ROOT}/include ${VEXO_ROOT}/src/platform/ce
                                            ${VEXO_ROOT}/device/library)
  target_compile_options(${elf} PRIVATE ${VEXO_PROCESSOR} "$<$<COMPILE_LANGUAGE:CXX>:${VEXO_DEVICE_OPTIONS}>"
                                        "$<$<COMPILE_LANGUAGE:C>:${VEXO_DEVICE_C_OPTIONS}>")
  target_compile_definitions(${elf} PRIVATE IMAGE_BASE=${VEXO_PROGRAM_BASE})
  target_link_options(${elf} PRIVATE ${VEXO_PROCESSOR} -nostdlib -T ${VEXO_PROGRAM_SCRIPT}
    -Wl,--defsym=IMAGE_BASE=${VEXO_PROGRAM_BASE} -Wl,--emit-relocs -Wl,--gc-sections -Wl,--fatal-warnings
    -Wl,--no-warn-rwx-segments
    -Wl,-Map,${CMAKE_BINARY_DIR}/${name}.map)
  target_link_libraries(${elf} PRIVATE gcc)

  add_custom_command(
    OUTPUT ${CMAKE_BINARY_DIR}/${name}.res
    COMMAND ${LLVM_RC} /no-preprocess /FO ${CMAKE_BINARY_DIR}/${name}.res version.rc
    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/version.rc
    COMMENT "Compiling the version resource of ${name}.exe")
  add_custom_command(
    OUTPUT ${CMAKE_BINARY_DIR}/${name}.exe
    COMMAND ${CEIMAGE} --program --machine ${VEXO_MACHINE} --resource ${CMAKE_BINARY_DIR}/${name}.res
            --output ${CMAKE_BINARY_DIR}/${name}.exe $<TARGET_FILE:${elf}>
    DEPENDS ${elf} ${CMAKE_BINARY_DIR}/${name}.res ${CEIMAGE}
    COMMENT "Making ${name}.exe")
  add_custom_target(${target} ALL DEPENDS ${CMAKE_BINARY_DIR}/${name}.exe)
endfunction()
