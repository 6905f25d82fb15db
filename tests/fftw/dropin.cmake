# The same program, built for Debian's FFTW, on Debian's libraries and on
# zar's (through LD_LIBRARY_PATH): it must give correct results on both and
# be answered by zar's file in the second run.
set(ZAR_DEBIAN_FFTW /usr/lib/i386-linux-gnu/libfftw3.so)
if(EXISTS ${ZAR_DEBIAN_FFTW})
  # A sanitized core needs the sanitizer runtime loaded first into this
  # unsanitized program.
  set(preload "")
  if(ZAR_SANITIZE)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -m32 -print-file-name=libasan.so
      OUTPUT_VARIABLE preload OUTPUT_STRIP_TRAILING_WHITESPACE)
  endif()
  add_executable(fftw_dropin ${CMAKE_SOURCE_DIR}/tests/fftw/dropin/dropin.c)
  target_compile_options(fftw_dropin PRIVATE -Wall)
  target_link_libraries(fftw_dropin PRIVATE ${ZAR_DEBIAN_FFTW} /usr/lib/i386-linux-gnu/libfftw3f.so m ${CMAKE_DL_LIBS})
  add_dependencies(fftw_dropin ${ZAR_FFTW_LIBS})
  add_test(NAME fftw_dropin_debian COMMAND fftw_dropin)
  set_tests_properties(fftw_dropin_debian PROPERTIES PASS_REGULAR_EXPRESSION "fftw_execute from /(usr/)?lib/i386-linux-gnu/libfftw3.so.3\n.*all results correct")
  add_test(NAME fftw_dropin_zar COMMAND fftw_dropin)
  set_tests_properties(fftw_dropin_zar PROPERTIES
    ENVIRONMENT "LD_LIBRARY_PATH=${CMAKE_BINARY_DIR}/lib;ZAR_KERNEL_PATH=${CMAKE_BINARY_DIR}/lib;LD_PRELOAD=${preload}"
    PASS_REGULAR_EXPRESSION "fftw_execute from ${CMAKE_BINARY_DIR}/lib/libfftw3.so.3\nfftwf_execute from ${CMAKE_BINARY_DIR}/lib/libfftw3f.so.3\nall results correct")
endif()
