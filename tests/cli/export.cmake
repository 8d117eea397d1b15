# `orvane export`: every file it writes is read back with FFmpeg by
# media_probe_check (container, codecs, sizes, pixel formats, frame count,
# audio, pixels of the first frame). Included from CMakeLists.txt.

add_executable(orvane_cli_make_export_fixture make_export_fixture.cpp
               ${PROJECT_SOURCE_DIR}/tests/media/media_fixtures.cpp)
target_link_libraries(orvane_cli_make_export_fixture PRIVATE orvane::media)
target_include_directories(orvane_cli_make_export_fixture PRIVATE ${PROJECT_SOURCE_DIR})

add_executable(orvane_cli_media_probe_check media_probe_check.cpp)
# FFmpeg comes with the media library.
target_link_libraries(orvane_cli_media_probe_check PRIVATE orvane::media)

set(export_fixtures ${CMAKE_CURRENT_BINARY_DIR}/export_fixtures)
set(export_project ${export_fixtures}/export.orvane)
add_test(NAME cli.MakeExportFixtures COMMAND orvane_cli_make_export_fixture ${export_fixtures})
set_tests_properties(cli.MakeExportFixtures PROPERTIES FIXTURES_SETUP cli_export TIMEOUT 60)

# An export that must succeed (with the expect_run checks after CHECKS),
# then the probe of what it wrote, whose lines must match each --stdout
# regex after PROBE (pixels X,Y after POINTS are printed for matching).
# The probe reads `written`: the output with the extension the export adds.
function(orvane_cli_export_test name output written)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "EXPORT;CHECKS;PROBE;POINTS")
  orvane_cli_test(${name} --exit zero ${arg_CHECKS}
    -- $<TARGET_FILE:orvane> export ${export_project} -o ${export_fixtures}/${output} ${arg_EXPORT})
  set_tests_properties(cli.${name} PROPERTIES FIXTURES_REQUIRED cli_export FIXTURES_SETUP cli_${name} TIMEOUT 60)
  orvane_cli_test(${name}Probe --exit zero --no-stderr ${arg_PROBE}
    -- $<TARGET_FILE:orvane_cli_media_probe_check> ${export_fixtures}/${written} ${arg_POINTS})
  set_tests_properties(cli.${name}Probe PROPERTIES FIXTURES_REQUIRED cli_${name})
endfunction()

# A run that must fail with this exit status and one sentence on stderr.
function(orvane_cli_export_failure name status sentence)
  orvane_cli_test(${name} --exit zero --stdout "^exit=${status}$" --one-line-stderr --stderr "${sentence}"
    -- sh -c "\"$0\" \"$@\" && echo exit=0 || echo exit=$?" $<TARGET_FILE:orvane> export ${ARGN})
  set_tests_properties(cli.${name} PROPERTIES FIXTURES_REQUIRED cli_export)
endfunction()

# The red solid and the grey background below the clip, in image rows from
# the top (H.264 comes back within a few steps of each).
set(red "pixel 20,100: (F[0-9A-F]|E[0-9A-F])[0-2][0-9A-F][0-2][0-9A-F]FF")
set(grey "pixel 150,110: [78][0-9A-F][78][0-9A-F][78][0-9A-F]FF")

orvane_cli_export_test(ExportDefaultsToMatchingMp4 main main.mp4
  EXPORT
  PROBE --stdout "container: mov,mp4.* brand=isom" --stdout "video: h264 yuv420p 162x122 frames=15 alpha=no"
        --stdout "audio: aac channels=2 rate=48000" --stdout "duration: 0\\.5" --stdout "${red}" --stdout "${grey}"
  POINTS 20,100 150,110)

# The whole of the green-on-clear composition with its alpha, and no sound
# track as it has no sound.
orvane_cli_export_test(ExportProResKeepsAlpha silent.mov silent.mov
  EXPORT --preset alpha.prores --composition Silent
  PROBE --stdout "brand=qt" --stdout "video: prores yuva444p1[02]le 64x48 frames=12 alpha=yes"
        --stdout "audio: none" --stdout "pixel 2,2: [0-9A-F]{6}00" --stdout "pixel 32,24: [0-2][0-9A-F]F[0-9A-F][0-2][0-9A-F]FF"
  POINTS 2,2 32,24)

orvane_cli_export_test(ExportVp9WebmKeepsAlpha silent_vp9 silent_vp9.webm
  EXPORT --codec vp9Alpha --composition Silent
  PROBE --stdout "container: matroska,webm" --stdout "video: vp9 yuv420p 64x48 frames=12 alpha=yes"
        --stdout "audio: none" --stdout "pixel 2,2: [0-9A-F]{6}0[0-9A-F]" --stdout "pixel 32,24: [0-3][0-9A-F][E-F][0-9A-F][0-3][0-9A-F]F[0-9A-F]"
  POINTS 2,2 32,24)

orvane_cli_export_test(ExportAudioOnlyWritesM4a sound sound.m4a
  EXPORT --preset audio.master
  PROBE --stdout "brand=M4A" --stdout "video: none" --stdout "audio: aac channels=2 rate=48000"
        --stdout "duration: 0\\.(4[6-9]|5)")

# The work area (0.1 to 0.3 s) with JSON progress lines and the closing line.
orvane_cli_export_test(ExportWorkAreaWithJsonProgress area.mp4 area.mp4
  EXPORT --work-area --json-progress
  CHECKS --no-stderr
         --stdout "\\{\"progress\":[0-9.]+,\"frame\":[0-9]+,\"frames\":6,\"fps\":[0-9.]+,\"remaining\":([0-9.]+|null)\\}"
         --stdout "\\{\"done\":true,\"output\":\"[^\"]*/area\\.mp4\"\\}$"
  PROBE --stdout "video: h264 yuv420p 162x122 frames=6 alpha=no")

orvane_cli_export_test(ExportRangeSilently range range.mp4
  EXPORT --range 0:0.2 --preset video.silent
  CHECKS --stderr "Exporting: 100%$"
  PROBE --stdout "video: h264 yuv420p 162x122 frames=6 alpha=no" --stdout "audio: none")

orvane_cli_export_failure(ExportOfBackwardRangeIsAUsageError 2
  "^orvane: The range must be two times in seconds from 0 on, the first before the second, as A:B\\.$"
  ${export_project} -o ${export_fixtures}/x.mp4 --range 0.3:0.1)
orvane_cli_export_failure(ExportOfUnknownPresetIsAUsageError 2
  "^orvane: There is no export preset \"web\". the presets are match, youtube\\.1080, .*audio\\.master\\.$"
  ${export_project} -o ${export_fixtures}/x.mp4 --preset web)
orvane_cli_export_failure(ExportOfUnknownCodecIsAUsageError 2
  "^orvane: The codec must be one of h264, proRes4444, hevcWithAlpha or vp9Alpha\\.$"
  ${export_project} -o ${export_fixtures}/x.mp4 --codec av1)
orvane_cli_export_failure(ExportOfWorkAreaAndRangeIsAUsageError 2 "^orvane: .*--work-area"
  ${export_project} -o ${export_fixtures}/x.mp4 --range 0:1 --work-area)
orvane_cli_export_failure(ExportOfMissingProjectFails 1 "^orvane: .*no-such\\.orvane"
  ${export_fixtures}/no-such.orvane -o ${export_fixtures}/x.mp4)
orvane_cli_export_failure(ExportOfUnknownCompositionFails 1 "^orvane: The project has no composition named \"Nope\"\\.$"
  ${export_project} -o ${export_fixtures}/x.mp4 --composition Nope)
orvane_cli_export_failure(ExportOfSilenceAsAudioFails 1 "^orvane: The composition has nothing to export\\.$"
  ${export_project} -o ${export_fixtures}/nothing.m4a --composition Silent --preset audio.master)

# HEVC with alpha works only where libx265 takes an alpha picture; elsewhere
# the export fails with the sentence that says so, before any file is made.
orvane_cli_test(ExportHevcWithAlphaSucceedsOrSaysWhyNot
  --stderr "^(orvane: HEVC with alpha is not available: the installed libx265 encoder has no alpha channel support\\. Use ProRes 4444 or VP9 WebM for transparency\\.)?$"
  -- $<TARGET_FILE:orvane> export ${export_project} -o ${export_fixtures}/hevc.mov --preset alpha.hevc --json-progress)
set_tests_properties(cli.ExportHevcWithAlphaSucceedsOrSaysWhyNot PROPERTIES FIXTURES_REQUIRED cli_export TIMEOUT 60)

add_test(NAME cli.ExportInterruptedRemovesItsFile
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/export_interrupt.sh $<TARGET_FILE:orvane> ${export_project}
          ${export_fixtures}/interrupted.mp4)
set_tests_properties(cli.ExportInterruptedRemovesItsFile PROPERTIES FIXTURES_REQUIRED cli_export TIMEOUT 60)
