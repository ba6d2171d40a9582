# Makes the tables: LC_ALL=C awk -f table.awk rows.tsv FIGURES. A row of rows.tsv is: id, work, key
# of our figure, peer, key of the peer's figure (or "=" and a constant), kind, target. The kind
# "faster" asks how many times our time goes into the peer's, "share" how many times the peer's goes
# into ours. A figure that is there several times counts with its median. The ids of rows that miss their target go to the file MISSED. Exits with 1 if a figure
# is missing.

BEGIN {
  FS = "\t"
  columns = split("work	ours	peer	the peer's	ratio	target	verdict", heads, "\t")
  split("l r l r r r l", sides, " ")
}

NR == FNR { rows[++count] = $0; next }
{ figures[$1, ++repeats[$1]] = $2 }

# The median of the figures with this key.
function median(key,    count, i, j, number, sorted) {
  count = repeats[key]
  for (i = 1; i <= count; i++) {
    number = figures[key, i] + 0
    for (j = i; j > 1 && sorted[j - 1] > number; j--) sorted[j] = sorted[j - 1]
    sorted[j] = number
  }
  return sorted[int((count + 1) / 2)]
}

# In characters: bytes that go on with one are not counted.
function width(text) {
  gsub(/[\200-\277]/, "", text)
  return length(text)
}

function pad(text, size, side) {
  for (size -= width(text); size > 0; size--) text = side == "r" ? " " text : text " "
  return text
}

function put(line, column, text) {
  cell[line, column] = text
  if (width(text) > widest[column]) widest[column] = width(text)
}

function sized(key, value) {
  if (key ~ /^memory/) return sprintf("%.1f MiB", value / 1048576)
  if (value < 1000) return sprintf("%.1f ns", value)
  if (value < 1000000) return sprintf("%.2f µs", value / 1000)
  return sprintf("%.2f ms", value / 1000000)
}

function times(ratio) {
  return sprintf(ratio < 10 ? "%.2f×" : "%.0f×", ratio)
}

function judge(line, id, label, our_key, peer_key, kind, target,    ours, theirs, ratio, met) {
  if (peer_key ~ /^=/) figure[peer_key] = substr(peer_key, 2)
  put(line, 2, our_key in figure ? sized(our_key, figure[our_key]) : "–")
  put(line, 4, peer_key in figure ? sized(our_key, figure[peer_key]) : "–")
  put(line, 6, target == "" ? "–" : (kind == "faster" ? "at least " : "at most ") target "×")
  if (!(our_key in figure) || !(peer_key in figure)) {
    put(line, 5, "–")
    put(line, 7, "not measured")
    incomplete = 1
    return
  }
  ours = figure[our_key]
  theirs = figure[peer_key]
  ratio = kind == "faster" ? theirs / ours : ours / theirs
  met = kind == "faster" ? ratio >= target : ratio <= target
  if (kind == "share") put(line, 5, times(ratio) " of it")
  else put(line, 5, ratio < 1 ? times(1 / ratio) " slower" : times(ratio) " faster")
  put(line, 7, target == "" ? "–" : met ? "met" : "MISSED")
  if (target != "" && !met) print id "\t" label > MISSED
}

function print_line(line,    column, text) {
  text = "|"
  for (column = 1; column <= columns; column++) {
    text = text " " pad(cell[line, column], widest[column], sides[column]) " |"
  }
  print text
}

function print_rule(    column, text) {
  text = "|"
  for (column = 1; column <= columns; column++) {
    rule = sides[column] == "r" ? ":" : "-"
    while (length(rule) < widest[column]) rule = sides[column] == "r" ? "-" rule : rule "-"
    text = text " " rule " |"
  }
  print text
}

END {
  for (key in repeats) figure[key] = median(key)
  for (column = 1; column <= columns; column++) put(0, column, heads[column])
  for (line = 1; line <= count; line++) {
    if (rows[line] ~ /^##/) continue
    split(rows[line], field, "\t")
    put(line, 1, field[2])
    put(line, 3, field[4])
    judge(line, field[1], field[2] ", against " field[4], field[3], field[5], field[6], field[7])
  }
  for (line = 1; line <= count; line++) {
    if (rows[line] !~ /^##/) { print_line(line); continue }
    print (line > 1 ? "\n" : "") rows[line] "\n"
    print_line(0)
    print_rule()
  }
  exit incomplete
}
