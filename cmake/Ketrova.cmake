# ketrova_library(NAME SOURCES... [DEPS target...])
# One static library per layer folder; its headers are included as "folder/file.h" from src/.
function(ketrova_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  if(ARG_DEPS)
    target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  endif()
  set_property(GLOBAL APPEND PROPERTY KETROVA_LIBRARIES ${name})
endfunction()

# ketrova_test(NAME LABEL label [QT] SOURCES... [DEPS target...])
# A GoogleTest executable whose cases are registered with CTest under one label:
# unit (no server), server (PostgreSQL, MariaDB) or gui (Qt offscreen). With QT,
# the test's main makes a QApplication and the test links the Qt test support
# (tests/qt_support: ModalAnswerer); its cases run with QT_QPA_PLATFORM=offscreen
# and with a home and XDG folders of their own in the build tree, so that what
# the desktop writes there (the application folder, the registry ini, the mail
# outbox) never reaches the user's.
function(ketrova_test name)
  cmake_parse_arguments(ARG "QT" "LABEL" "SOURCES;DEPS" ${ARGN})
  if(NOT ARG_LABEL)
    set(ARG_LABEL unit)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  if(ARG_QT)
    target_link_libraries(${name} PRIVATE ${ARG_DEPS} ketrova_qt_test_support GTest::gtest)
    set(home ${PROJECT_BINARY_DIR}/gui-home)
    file(MAKE_DIRECTORY ${home})
    set(environment ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen;HOME=${home};XDG_CONFIG_HOME=${home}/config;XDG_DATA_HOME=${home}/data")
  else()
    target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gtest_main)
    set(environment)
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE KETROVA_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  gtest_discover_tests(${name} PROPERTIES LABELS ${ARG_LABEL} ${environment} DISCOVERY_TIMEOUT 60)
endfunction()
