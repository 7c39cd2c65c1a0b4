#!/usr/bin/env bash
# Renders the reports of the samples in headless Chromium and looks at what came out of it.
#
#   report_in_browser.sh VESKA SAMPLE...   exits with 77 where there is no Chromium
#
# A report must log nothing to the console, load nothing, fit a narrow window, be light or dark as it
# is asked for, and draw every chart with its texts inside it and beside each other.
# PICTURE=FILE.png keeps the picture of the first sample's report.
set -euo pipefail

veska=$1
shift
chromium=$(command -v chromium || command -v chromium-browser) || {
  echo "report_in_browser: skipped, since there is no chromium (Debian package chromium)"
  exit 77
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
  echo "FAILED  $*"
  failures=$((failures + 1))
}

# browse ARGUMENT...: its standard output; what the page logged goes to $work/console.
browse() {
  timeout 120 "$chromium" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync --hide-scrollbars \
    --enable-logging=stderr --user-data-dir="$work/profile" "$@" 2>"$work/log"
  grep -o 'CONSOLE.*' "$work/log" >"$work/console" || true
}

# Put into a copy of a page: writes into the document what is wrong with how it is laid out.
measure='<script>addEventListener("load", () => {
  const wrong = [];
  const light = color => color.match(/\d+/g).slice(0, 3).reduce((sum, part) => sum + +part, 0) > 382;
  const dark = matchMedia("(prefers-color-scheme: dark)").matches;
  const root = getComputedStyle(document.documentElement);
  if (light(root.backgroundColor) === dark) wrong.push("paper of the wrong lightness");
  for (const part of document.querySelectorAll("p, h1, dd, td, th, caption, text:not(.on-bar)")) {
    const style = getComputedStyle(part);
    const ink = part.matches("text") ? style.fill : style.color;
    if (light(ink) !== dark) wrong.push("ink of the wrong lightness: " + part.textContent);
  }
  if (document.documentElement.scrollWidth > innerWidth) wrong.push("wider than the window");
  for (const svg of document.querySelectorAll("svg")) {
    const all = svg.getBoundingClientRect();
    for (const part of svg.querySelectorAll("text, rect, path")) {
      if (part.getClientRects().length === 0) continue;  // not shown at this width
      const box = part.getBoundingClientRect();
      const inside = box.left > all.left - 3 && box.right < all.right + 3 &&
        box.top > all.top - 3 && box.bottom < all.bottom + 3;
      if (!inside) wrong.push("outside its drawing: " + part.outerHTML.slice(0, 120));
    }
    const texts = [...svg.querySelectorAll("text")];
    const boxes = texts.map(text => text.getBoundingClientRect());
    boxes.forEach((a, i) => boxes.slice(i + 1).forEach((b, j) => {
      const covers = a.right > b.left + 1 && b.right > a.left + 1 &&
        a.bottom > b.top + 4 && b.bottom > a.top + 4;
      if (covers) wrong.push(texts[i].textContent + " on " + texts[i + 1 + j].textContent);
    }));
  }
  document.body.innerHTML = "";
  document.body.textContent = "measured: " + (wrong.join("; ") || "all well");
});</script>'

# check_page PAGE OPTION...
check_page() {
  local page=$1 copy=$work/measured.html result
  shift
  sed '/Content-Security-Policy/,/>/d' "$page" >"$copy"
  echo "$measure" >>"$copy"
  result=$(browse --window-size=500,900 "$@" --dump-dom "file://$copy" |
    grep -o 'measured: [^<]*') || result="not rendered"
  [[ $result == "measured: all well" ]] || fail "${page##*/} $*: $result"
}

# What this script looks for has to be seen where it is.
check_itself() {
  local bad=$work/bad.html fault told before
  echo '<p>x<script>console.error("heard")</script></footer>' >"$bad"
  browse --dump-dom "file://$bad" >"$work/dom"
  grep -q heard "$work/console" || fail "an error on the console is not seen"
  while IFS='|' read -r fault told; do
    echo "<meta name=viewport><style>html { background: #fff }</style>$fault" >"$bad"
    before=$failures
    check_page "$bad" >"$work/expected"
    failures=$before
    grep -q "measured: $told" "$work/expected" || fail "not told of $fault: $(<"$work/expected")"
  done <<'EOF'
<svg width=50 height=10><text x=40 y=8>x</text></svg>|outside its drawing
<svg width=90 height=60><text x=30 y=35>x</text><text x=31 y=35>y</text></svg>|x on y
<p style="color: #eee">x</p>|ink of the wrong
<style>html { background: #222 }</style>|paper of the wrong
<div style="width: 600px">x</div>|wider than the window
EOF
}

check_itself
for sample; do
  page=$work/$(basename "${sample%.*}").html
  "$veska" report "$sample" -o "$page"
  browse --window-size=1060,900 --dump-dom "file://$page" >"$work/dom" ||
    fail "${page##*/}: $(tail -n 3 "$work/log")"
  grep -q '</footer>' "$work/dom" || fail "${page##*/}: not rendered to its end"
  [[ ! -s $work/console ]] || fail "${page##*/}: $(head -n 3 "$work/console")"
  ! grep -qiE '<script|https?:|//[a-z]|url\(|@import' "$page" || fail "${page##*/}: not self-contained"
  check_page "$page"
  check_page "$page" --force-dark-mode
  [[ -z ${PICTURE:-} ]] || {
    browse --window-size=1060,2640 --screenshot="$work/picture.png" "file://$page"
    pngquant --speed 1 --force --output "$PICTURE" "$work/picture.png"
    unset PICTURE
  }
done
echo "report_in_browser: $# reports, $failures failures"
[[ $failures -eq 0 ]]
