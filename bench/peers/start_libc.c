/* start_libc: what a process that links libc alone costs to start. */
int main(void) {
    return 0;
}
