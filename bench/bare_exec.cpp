// bare_exec: the least that starting a program can cost. Built twice: with the daemon's libraries,
// and static, with none.

int main() {
    return 0;
}
