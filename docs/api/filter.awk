# Turns the comments of a public header into Doxygen's form, line by line, so that line numbers stay:
#   the head comment       documents the file
#   "Threads    any."      a paragraph of that title, which the lines below it go on indented
#   "Example"              the code that follows, indented by four
#   other indented lines   stand as they are
# and puts what the header declares into the group of its folder.

function show(line) {  # one line late, so that a block can be opened and closed at the end of a line
  if (NR > 1) print held
  held = line
}
function endBlock() {
  held = held block
  block = ""
}

FNR == 1 && match($0, /^\/\/ kestrel\/[^ ]* - /) {
  path = substr($0, 4, RLENGTH - 6)
  split(path, folders, "/")
  family = (folders[3] == "") ? "" : folders[2]
  isHead = 1
  show("/// @file " path " @brief " toupper(substr($0, RLENGTH + 1, 1)) substr($0, RLENGTH + 2))
  next
}
isHead && /^\/\/( |$)/ { $0 = "/" $0 }
/^#pragma once/ {
  endBlock()
  isHead = inParagraph = 0
  show(family == "" ? $0 : $0 " /** @addtogroup " family "\n@{ */")
  next
}

!/^ *\/\/\/( |$)/ {
  endBlock()
  inParagraph = 0
  show($0)
  next
}
{
  margin = $0
  sub(/\/\/\/.*/, "///", margin)
  text = substr($0, length(margin) + 1)
  match(text, /^ */)
  indent = RLENGTH
}
block != "" && indent >= 5 { show($0); next }
block != "" { endBlock() }
match(text, /^ [A-Z][a-z]+  +/) || text == " Example" {
  title = substr(text, 2)
  sub(/ .*/, "", title)
  inParagraph = title != "Example"
  text = " <p><b>" title "</b>  " (inParagraph ? substr(text, RLENGTH + 1) : substr(text, 9))
  if (!inParagraph) {
    text = text " @code{.cpp}"
    block = " @endcode"
  }
  show(margin text)
  next
}
indent >= 5 && !inParagraph {
  held = held " @code{.unparsed}"
  block = " @endcode"
  show($0)
  next
}
indent < 5 { inParagraph = text ~ /^ @/ }
{
  listed = inParagraph && text ~ /^ +[A-Za-z_]+   +/  # a list of names and meanings within the paragraph
  sub(/^ */, listed ? " <br>" : " ", text)
  show(margin text)
}

END {
  endBlock()
  print held
  if (family != "") print "/** @} */"
}
