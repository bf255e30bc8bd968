# Has `player` play a second of black.
add_test(NAME clip COMMAND ffmpeg -nostdin -v error -y
  -f lavfi -i color=black:s=64x64:r=25:d=1 -c:v mpeg4 ${CMAKE_CURRENT_BINARY_DIR}/clip.mp4)
add_test(NAME player COMMAND player ${CMAKE_CURRENT_BINARY_DIR}/clip.mp4)
set_tests_properties(clip PROPERTIES FIXTURES_SETUP clip)
set_tests_properties(player PROPERTIES FIXTURES_REQUIRED clip
  PASS_REGULAR_EXPRESSION "session: .*zel_black_cnt=.*zel_vframes=25")
