/* The pages name this file; the list and the forms are built by js/fileman. */
