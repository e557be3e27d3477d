# The client library's public face, and all that an installation holds of the project's headers:
# what a program that drives the helper uses. They include nothing of the core, so a program that
# links qem::client compiles against these alone (scripts/package-check builds one that way, and
# the layering check fails when one of them includes a project header missing from the list).
set(qem_public_headers
  client/command.h client/error.h client/event.h client/session.h client/session_names.h)
