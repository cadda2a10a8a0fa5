# Batches: cut in any way, of any study, killed at any moment, on a Slurm of the test's own.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
foreach(test batch_splits batch_slurm random_runs same_numbers)
  add_test(NAME robustness.${test} COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/test_${test}.py)
  set_tests_properties(
    robustness.${test}
    PROPERTIES LABELS robustness SKIP_RETURN_CODE 77 TIMEOUT 600
               ENVIRONMENT "WXL_PROGRAM=$<TARGET_FILE:wxl>;PYTHONDONTWRITEBYTECODE=1")
endforeach()
