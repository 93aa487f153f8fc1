# Prepares a header for Doxygen: each gets a page that lists what it declares, under the comment at its beginning.
NR == 1 { head = 1; if (/^\/\//) print "/// @file"; else { print "/** @file */ " $0; next } }
head && /^\/\/ / { sub(/^\/\//, "///") }
!/^\/\// { head = 0 }
{ print }
