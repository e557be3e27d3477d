# The client's headers and the core headers that they include, and no other: a program that
# links qem::client compiles against these alone (scripts/package-check builds one that way, and
# the layering check fails when one of them includes a project header missing from the list).
set(qem_public_headers
  client/command.h client/event.h client/helper_lookup.h client/helper_process.h
  client/session.h client/session_names.h
  channel/lock_file.h channel/log_file.h channel/many_to_one_base.h
  channel/many_to_one_receiver.h channel/many_to_one_sender.h
  platform/change_watch.h platform/folder_item.h platform/text_stream.h)
