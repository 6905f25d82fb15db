#!/usr/bin/env bash
# Reads a LAPACK test program's report on standard input and prints one line
#   run=<n> failed=<n> illegal=<n> info=<n> complete=<0|1>
# run: the tests counted in "(<n> tests run)" and "<f> out of <n> tests
# failed" lines; failed: the <f> of the latter; illegal: lines reporting an
# illegal value or an error-exit failure; info: lines mentioning INFO (a
# routine under test returned non-zero; the balancing tests count their
# examples with a non-zero INFO); complete: the program reached "End of tests".
awk '
  / out of / { for (i = 2; i < NF; i++) if ($i == "out" && $(i + 1) == "of") { failed += $(i - 1); run += $(i + 2) } }
  /tests run\)/ { for (i = 3; i <= NF; i++) if ($i == "run)") run += $(i - 2) }
  /[Ii]llegal|ERROR EXIT|[Ff]ailed to detect/ { illegal++ }
  / INFO/ { info++ }
  /number of examples where info is not 0 *=/ { info += $NF }
  /End of tests/ { complete = 1 }
  END { printf "run=%d failed=%d illegal=%d info=%d complete=%d\n", run, failed, illegal, info, complete }
'
