#!/usr/bin/env bash
# Adds the demo's large program to a demo installation: "Sheet 3000.prg" in PUNCH25's Parts,
# 32,000 blocks of about 110 bytes (3 MB, CR LF), the same on every run. Large enough for the
# Edit menu's rewrites to show their progress, and just within the 16-bit block numbers of a
# renumber from 0 by 1 (by 10 it overflows, and the program stays as it was).
#   tools/demo-programs.sh <demo installation's C: directory>
set -euo pipefail
target="$1/Jobs/PUNCH25/Parts/Sheet 3000.prg"
[ -f "$target" ] && exit 0
awk 'BEGIN {
    srand(3000);
    printf "%%\r\nO3000 (SHEET 3000X1500 - 2 MM GALVANISED - NEST OF 40 PANELS)\r\n";
    for (i = 1; i <= 31997; i++) {
        part = int(i / 800) + 1; row = int(i / 40) % 20 + 1; col = i % 40 + 1;
        if (i % 800 == 1)
            printf "N%d T%d G00 X%.2f Y%.2f (TOOL CHANGE - ROUND %d MM FOR PANEL %d OF 40 ON THIS SHEET)\r\n",
                   i * 10 % 100000, int(rand() * 30) + 101, rand() * 3000, rand() * 1500, int(rand() * 20) + 5, part;
        else
            printf "N%d G01 X%.2f Y%.2f F%d (PANEL %d HOLE PATTERN ROW %d COLUMN %d OF THE LOUVRE FIELD)\r\n",
                   i * 10 % 100000, rand() * 3000, rand() * 1500, 2000 + int(rand() * 8) * 500, part, row, col;
    }
    printf "M30\r\n";
}' >"$target"
