# Options of a help text, in mdoc. Set `only` to the title of one group, or leave it empty for all groups
# that are settings, with their titles.
function flush_option(    count, words, i, line) {
  if (names == "") return
  print ".It " names
  if (text !~ /[].]$/) text = text "."
  gsub(/\\/, "\\e", text)
  gsub(/--/, "\\-\\-", text)
  gsub(/ -/, " \\-", text)
  gsub(/\[-/, "[\\-", text)
  count = split(text, words, " ")
  line = ""
  for (i = 1; i <= count; i++) {
    if (length(line) + length(words[i]) > 76) { print line; line = "" }
    line = line (line == "" ? "" : " ") words[i]
    # A sentence ends a line in mdoc.
    if (words[i] ~ /\.$/ && i < count) { print line; line = "" }
  }
  if (line != "") print line
  names = text = ""
}
# "-o,--output OUT" and "--denoise auto|X"
function header(option, value,    flags, count, i, result, words) {
  count = split(option, flags, ",")
  result = "Fl " substr(flags[1], 2)
  for (i = 2; i <= count; i++) result = result " , " substr(flags[i], 2)
  count = split(value, words, "|")
  for (i = 1; i <= count; i++) result = result (i > 1 ? " | " : " ") (words[i] ~ /^[A-Z]/ ? "Ar " : "Cm ") words[i]
  return result
}
/^[A-Z].*:$/ {
  flush_option()
  title = substr($0, 1, length($0) - 1)
  wanted = only == "" ? title !~ /^(Positionals|Options|Pictures in and out|Presets|Examples)$/ : title == only
  if (wanted && only == "") {
    if (open) print ".El\n.Pp"
    print title ":\n.Bl -tag -width Ds"
    open = 1
  }
  next
}
wanted && /^  -/ {
  flush_option()
  names = header($1, match($0, /^  [^ ]+ [^ ]/) ? $2 : "")
  if (names ~ /-help$/) { names = ""; next }
  match($0, /^  [^ ]+( [^ ]+)?( +|$)/)
  text = substr($0, RLENGTH + 1)
  next
}
wanted && names != "" && /^     / { sub(/^ +/, ""); text = text " " $0; next }
/^[^ ]/ { flush_option(); wanted = 0 }
END { flush_option(); if (open) print ".El" }
