# Doxygen input filter for README.md (sed -E): its links to headers
# ("](time/CTimecode.h)"), which work where the repository is browsed,
# become references to the headers' pages in the generated reference.
s#\]\(([a-z]+/)?([A-Za-z0-9_]+\.h)\)#](@ref \2)#g
