# Doxygen input filter for README.md (sed -E): its links to headers
# ("](time/CTimecode.h)"), which work where the repository is browsed,
# become references to the headers' pages in the generated reference.
s#\]\(([a-z]+/)?([A-Za-z0-9_]+\.h)\)#](@ref \2)#g
# Links to other files of the repository (LICENSE, CHANGELOG.md, examples)
# have no page in the reference: their text stays, without the link.
s#\[([^]]*)\]\(([A-Za-z0-9_][A-Za-z0-9_./-]*)\)#\1#g
