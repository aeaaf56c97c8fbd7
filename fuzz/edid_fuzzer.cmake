# The fuzzer of the EDID decoder. It needs clang and a build that is instrumented throughout:
#   cmake -DCMAKE_CXX_COMPILER=clang++ -DTOVIRA_SANITIZE=address,undefined,fuzzer-no-link ...
#   edid_fuzzer -max_len=2048 work_folder fuzz/edid_corpus
add_executable(edid_fuzzer ${CMAKE_CURRENT_LIST_DIR}/edid_fuzzer.cpp)
target_link_libraries(edid_fuzzer PRIVATE vek_edid tovira_product_settings)
target_link_options(edid_fuzzer PRIVATE -fsanitize=fuzzer)
