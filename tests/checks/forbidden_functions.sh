#!/usr/bin/env bash
# The library and the tools keep away from what depends on the locale, takes numbers leniently or writes
# them in other ways than flib/io/fixed_field.h, overruns buffers or starts other programs.
set -euo pipefail
cd "$1"

functions='strto(d|f|ld|l|ul|ll|ull|imax)|ato[filq]|ato(ll)|v?[fs]?n?scanf|sto([idfl]|ll|ld|ul|ull)'
functions+='|setlocale|uselocale|newlocale|imbue|v?(as|d|f|s|sn)?printf|to_chars|str(cpy|cat)|gets|tmpnam|mktemp|system|popen'
functions+='|fork|exec[lv]p?e?|posix_spawnp?'
headers='locale|clocale|locale\.h|iostream|sstream|fstream|istream|ostream|iomanip|regex'
pattern="(^|[^A-Za-z0-9_])($functions)[[:space:]]*\(|std::locale|#include *<($headers)>"

# The pattern itself must find what it is there for.
for example in '    double x = std::strtod(p, &end);' '#include <sstream>' 'std::locale l;' 'system("ls");' \
    'return sscanf (line);' 'std::snprintf(text, 9, "%g", x);' 'std::printf("x");' 'std::to_chars(a, b, x);'; do
    grep -qE "$pattern" <<<"$example" || { echo "the pattern misses: $example" >&2; exit 1; }
done
status=0
while IFS= read -r -d '' file; do
    case $file in */flib/io/fixed_field.cpp) pattern_here=${pattern//|to_chars/} ;; *) pattern_here=$pattern ;; esac
    # Comments may speak of them.
    if sed 's://.*::' "$file" | grep -nE "$pattern_here" | sed "s:^:$file\::"; then status=1; fi
done < <(find lib tools \( -name '*.h' -o -name '*.cpp' \) -print0)
[ "$status" -eq 0 ] || echo "These are not to be used here." >&2
exit "$status"
