#!/usr/bin/env bash
# Reads a LAPACK test program's report on standard input and prints one line
#   failed=<n> illegal=<n> info=<n> complete=<0|1>
# failed: the tests counted in "<n> out of <m> tests failed to pass the
# threshold" lines; illegal: lines reporting an illegal value or an error-exit
# failure; info: lines mentioning INFO (a routine under test returned non-zero)
# (the balancing tests count their examples with a non-zero INFO);
# complete: the program reached "End of tests".
awk '
  / out of / { for (i = 2; i <= NF; i++) if ($i == "out" && $(i + 1) == "of") failed += $(i - 1) }
  /[Ii]llegal|ERROR EXIT|[Ff]ailed to detect/ { illegal++ }
  / INFO/ { info++ }
  /number of examples where info is not 0 *=/ { info += $NF }
  /End of tests/ { complete = 1 }
  END { printf "failed=%d illegal=%d info=%d complete=%d\n", failed, illegal, info, complete }
'
