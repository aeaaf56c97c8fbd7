# The fuzzer of the EDID decoder; the fuzz preset builds it.
#   build/fuzz/edid_fuzzer -max_len=2048 work_folder fuzz/edid_corpus
add_executable(edid_fuzzer ${CMAKE_CURRENT_LIST_DIR}/edid_fuzzer.cpp)
target_link_libraries(edid_fuzzer PRIVATE vek_edid tovira_product_settings)
target_link_options(edid_fuzzer PRIVATE -fsanitize=fuzzer)
