# What comes with the programs: pages of the manual, made of what they say of themselves, and completion of their words.
find_program(KRO_HELP2MAN help2man DOC "Maker of pages of the manual")
if(KRO_HELP2MAN AND NOT CMAKE_CROSSCOMPILING)
    set(KRO_MANUAL ${PROJECT_BINARY_DIR}/manual)
    set(programs kro-cli)
    if(TARGET kro-bench)
        list(APPEND programs kro-bench)
    endif()
    list(TRANSFORM programs REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE files)
    add_custom_command(OUTPUT ${KRO_MANUAL}/kro.1
        COMMAND ${PROJECT_SOURCE_DIR}/tools/manual/make-pages.sh ${PROJECT_VERSION} ${KRO_MANUAL} ${files}
        DEPENDS tools/manual/make-pages.sh ${programs}
        VERBATIM)
    add_custom_target(kro-manual ALL DEPENDS ${KRO_MANUAL}/kro.1)
    install(DIRECTORY ${KRO_MANUAL}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 FILES_MATCHING PATTERN *.1)
else()
    message(STATUS "kro: no pages of the manual: help2man is not installed, or the command is for another machine")
endif()

# The shells look for a file named after the program.
set(completions ${PROJECT_SOURCE_DIR}/tools/completions)
foreach(program kro kro-bench)
    install(FILES ${completions}/kro.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program})
    install(FILES ${completions}/kro.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
        RENAME ${program}.fish)
endforeach()
install(FILES ${completions}/_kro DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${KRO_ZSH_FOLDER})
