file(GLOB_RECURSE sources
  ${SOURCE_DIR}/engine/*.cpp ${SOURCE_DIR}/engine/*.h ${SOURCE_DIR}/views/*.cpp ${SOURCE_DIR}/views/*.h
  ${SOURCE_DIR}/shell/*.cpp ${SOURCE_DIR}/shell/*.h ${SOURCE_DIR}/tools/*.cpp ${SOURCE_DIR}/tools/*.h
  ${SOURCE_DIR}/tests/*.cpp ${SOURCE_DIR}/tests/*.h)
execute_process(COMMAND ${CLANG_FORMAT} --dry-run --Werror ${sources} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Some files do not follow .clang-format (run clang-format -i on them)")
endif()
