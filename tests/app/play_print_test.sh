#!/usr/bin/env bash
# What the screen prints under `zandorel play` reaches the PDF file that `printer pdf:PATH` names: the
# anomaly list printed from its dialog, then the one-tournée report from the screen's Imprimer, each in
# its own file; a file that cannot be written is an error. The texts are read back with pdftotext.
zandorel=$1
. "$(dirname "$0")/cli_checks.sh"
command -v pdftotext >/dev/null || { echo "pdftotext missing: install poppler-utils (scripts/deps.sh)"; exit 1; }

"$zandorel" demo-data --db "$work/d.db" --today 23/11/2026 2>/dev/null || { echo "FAIL demo data"; exit 1; }

cat >"$work/print.play" <<PLAY
today 23/11/2026
init
type Txt_CodeTournee 002
dialog Frm_Anomalies Cmd_Imprimer Cmd_Annuler
printer pdf:$work/anomalies.pdf
click Cmd_Affichage
printer pdf:$work/tournee.pdf copies 2
click Cmd_Imprimer
dump
terminate
PLAY
"$zandorel" play --db "$work/d.db" "$work/print.play" >"$work/out" 2>"$work/err" ||
    { fail "play: exit $?"; cat "$work/err"; }
grep -q '"messages":\[\]' "$work/out" || fail "play: a message box came: $(cut -c1-300 "$work/out")"

# pdf file, texts it must hold (one pattern per argument)
expect_pdf() {
    local pdf=$1
    shift
    [ "$(head -c 5 "$pdf" 2>/dev/null)" = "%PDF-" ] || { fail "$pdf: no PDF written"; return; }
    pdftotext -layout "$pdf" "$pdf.txt" || { fail "$pdf: unreadable"; return; }
    for text in "$@"; do
        grep -q -- "$text" "$pdf.txt" || fail "$(basename "$pdf"): « $text » missing"
    done
}
expect_pdf "$work/anomalies.pdf" "00018 BRUN Pierre" "Validé 07h15 - 07h30 / Protocole 07h30 - 09h30"
expect_pdf "$work/tournee.pdf" "TOURNEE : 002 MIXTE MATIN SUD CENTRE LUNDI" "du lundi 23 novembre 2026" \
    "Horaires" "BRUN Pierre"
[ "$(pdfinfo "$work/tournee.pdf" | sed -n 's/^Pages: *//p')" -ge 1 ] || fail "tournee.pdf: no page"
pdfinfo "$work/tournee.pdf" | grep -q "landscape\|Page size:.*842 x 595" ||
    fail "tournee.pdf: not landscape: $(pdfinfo "$work/tournee.pdf" | grep 'Page size')"

# The reports name patients: their files are their owner's alone, as those of `zandorel print`, even
# where a file was there before.
for pdf in "$work/anomalies.pdf" "$work/tournee.pdf"; do
    [ "$(stat -c %a "$pdf")" = 600 ] || fail "$(basename "$pdf"): mode $(stat -c %a "$pdf"), expected 600"
done
touch "$work/print.pdf" && chmod 644 "$work/print.pdf"
"$zandorel" print --db "$work/d.db" --date 23/11/2026 --tournee 002 --out "$work/print.pdf" --today 23/11/2026 \
    2>"$work/err" || fail "print: $(cat "$work/err")"
expect_pdf "$work/print.pdf" "TOURNEE : 002 MIXTE MATIN SUD CENTRE LUNDI"
[ "$(stat -c %a "$work/print.pdf")" = 600 ] || fail "print.pdf: mode $(stat -c %a "$work/print.pdf"), expected 600"
cmp -s <(pdftotext -layout "$work/print.pdf" -) "$work/tournee.pdf.txt" ||
    fail "the report printed from the screen differs from zandorel print's"

# A file that cannot be written fails the line, with its path, and the script's exit code says so.
cat >"$work/bad.play" <<PLAY
today 23/11/2026
init
type Txt_CodeTournee 002
dialog Frm_Anomalies Cmd_Annuler
click Cmd_Affichage
printer pdf:$work/none/x.pdf
click Cmd_Imprimer
terminate
PLAY
"$zandorel" play --db "$work/d.db" "$work/bad.play" >"$work/out" 2>"$work/err"
code=$?
[ "$code" -eq 1 ] || fail "unwritable PDF: exit $code, expected 1"
grep -q "ligne 7 : Impression impossible sur $work/none/x.pdf" "$work/err" ||
    fail "unwritable PDF: message « $(cat "$work/err") »"

if [ "$failures" -eq 0 ]; then echo "play print: all checks passed"; fi
exit "$failures"
