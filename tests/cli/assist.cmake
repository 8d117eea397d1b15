# `orvane assist` against a scripted OpenAI-format server on loopback: each
# test runs assist_test.sh, which starts the server, runs the command in a
# home folder of its own, and checks the output, the exit status, what the
# server was sent and the project written.
find_package(PkgConfig REQUIRED)
pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
find_package(nlohmann_json REQUIRED)

add_executable(orvane_cli_scripted_model_server scripted_model_server_main.cpp)
target_link_libraries(orvane_cli_scripted_model_server PRIVATE PkgConfig::HTTPLIB nlohmann_json::nlohmann_json)

add_executable(orvane_cli_assist_probe assist_project_probe.cpp)
target_link_libraries(orvane_cli_assist_probe PRIVATE orvane::document)
target_include_directories(orvane_cli_assist_probe PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_options(orvane_cli_assist_probe PRIVATE -Wno-free-nonheap-object)

function(orvane_cli_assist_test name mode)
  add_test(NAME cli.${name}
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/assist_test.sh ${mode} $<TARGET_FILE:orvane>
            $<TARGET_FILE:orvane_cli_scripted_model_server> $<TARGET_FILE:orvane_cli_assist_probe>
            ${CMAKE_CURRENT_BINARY_DIR}/assist/${mode})
  set_tests_properties(cli.${name} PROPERTIES TIMEOUT 60)
endfunction()

orvane_cli_assist_test(AssistTurnsPromptIntoTitleThatFadesIn title)
orvane_cli_assist_test(AssistTakesKeyFromEnvironmentOrFlagForTheRunOnly env-key)
orvane_cli_assist_test(AssistWithoutKeyFailsAndLeavesProject missing-key)
orvane_cli_assist_test(AssistBadArgumentsAreUsageErrors usage)
