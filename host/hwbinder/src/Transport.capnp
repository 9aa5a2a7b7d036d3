# SPDX-License-Identifier: Apache-2.0
# What processes of one device say to each other. Every process listens on a socket of its own and
# offers a Process; whoever holds a reference to one of its objects is connected to it directly.

@0xc2f1b6d08a4e9375;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("android::hardware::transport::wire");

interface Process {
  # The bootstrap capability of a connection, offered by both of its ends.

  introduce @0 (address :Text);
  # The first call of the end that connected: the name of the socket that it listens on itself, so
  # that references to its objects which arrive by way of others can use this connection.

  object @1 (id :UInt64) -> (binder :Binder);
  # An object by its number, for whoever got the reference from somebody else.

  contextObject @2 () -> (binder :BinderRef);
  # The service manager's object; null in every process but the service manager.
}

interface Binder {
  transact @0 (code :UInt32, flags :UInt32, chain :List(Frame), data :Parcel)
      -> (status :Int32, reply :Parcel);
  # One call. A oneway call returns as soon as the receiver has queued it.
}

struct Frame {
  # A thread that waits for the outcome of the call that this one belongs to.
  address @0 :Text;
  thread @1 :UInt64;
}

struct Parcel {
  flat @0 :Data;
  objects @1 :List(Object);
}

struct Object {
  position @0 :UInt32;
  # Where in the flat part the object has its place.

  embedded @1 :Bool;
  parent @2 :UInt32;
  parentOffset @3 :UInt64;
  # Of embedded objects: the buffer, by its number, and the eight bytes in it that point here.

  union {
    null @4 :Void;
    buffer @5 :Data;
    handle @6 :Handle;
    binder @7 :BinderRef;
  }
}

struct Handle {
  present @2 :Bool;
  # A null handle is not the same as an empty one.
  descriptors @0 :List(Descriptor);
  ints @1 :List(Int32);
}

interface Descriptor {}
# A file descriptor, attached to the capability.

struct BinderRef {
  address @0 :Text;
  # The socket name of the process in which the object lives; empty for a null reference.
  id @1 :UInt64;
  binder @2 :Binder;
  # Keeps the object alive until the receiver has its own way to it.
}
