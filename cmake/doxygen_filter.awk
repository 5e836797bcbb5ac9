# Doxygen input filter for the library's headers. Their comments are plain
# "//" lines: the opening block becomes the file's documentation, with its
# indented lines ("//   code") as code blocks; a comment line above a
# declaration becomes that declaration's documentation.
BEGIN { opening = 1; incode = 0 }
opening && /^\/\// {
  if (NR == 1) print "/// \\file"
  if ($0 ~ /^\/\/   /) {
    if (!incode) { print "/// \\code"; incode = 1 }
    print "/// " substr($0, 6)
  } else {
    if (incode) { print "/// \\endcode"; incode = 0 }
    print "///" substr($0, 3)
  }
  next
}
opening {
  if (incode) { print "/// \\endcode"; incode = 0 }
  opening = 0
}
/^[ \t]*\/\/ / && !/^[ \t]*\/\/ ----/ { sub(/\/\/ /, "/// "); print; next }
{ print }
